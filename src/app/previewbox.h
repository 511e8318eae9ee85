#pragma once

#include <QFrame>
#include <QImage>
#include <QString>

namespace valtrona {

/// Minimal preview used until the control library's picture view is
/// available: shows one image file scaled into its area.
class PreviewBox : public QFrame
{
    Q_OBJECT

public:
    explicit PreviewBox(QWidget *parent = nullptr);

    QString fileName() const;
    /// Loads and shows the file; the same name in another letter case is
    /// not loaded again.
    void setFileName(const QString &path);
    /// Clears the picture and the name.
    void cls();
    bool hasPicture() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_fileName;
    QImage m_image;
};

} // namespace valtrona
