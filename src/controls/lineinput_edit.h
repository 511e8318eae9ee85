#pragma once

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QString>
#include <QValidator>

namespace valtrona {

/// What may be typed or pasted into a line input's text elements.
///
/// `textBoxStyle` is the TextBoxStyle code of the line (see the enum).
/// `mask` lists the characters allowed on top of that ("*" or empty: all).
/// `maxLength` limits the length (0: unlimited).
struct LineInputRules
{
    Q_GADGET

public:
    /// The kind of text a text box takes; unknown codes take any text.
    enum class TextBoxStyle {
        AnyText = 0,
        UpperCase = 1,    ///< letters turned to upper case
        LowerCase = 2,    ///< letters turned to lower case
        Digits = 9,       ///< digits only
        WholeNumber = 10, ///< digits, "-" only in front
        Number = 11,      ///< digits, "-" only in front, one decimal separator ("," or ".")
    };
    Q_ENUM(TextBoxStyle)

    int textBoxStyle = 0;
    QString mask = QStringLiteral("*");
    int maxLength = 0;

    /// The kind of text `textBoxStyle` stands for.
    TextBoxStyle kind() const;

    /// The text with every character removed that the rules do not allow
    /// where it stands, case converted; the length is not limited here.
    QString clean(const QString &text, bool multiLine = false) const;
};

/// A validator for a QLineEdit that filters instead of refusing: what is
/// typed or pasted keeps its allowed characters, cut to the room `maxLength`
/// leaves. It follows the edit's text to see which part was inserted.
class LineInputValidator : public QValidator
{
    Q_OBJECT

public:
    explicit LineInputValidator(QLineEdit *edit);

    void setRules(const LineInputRules &rules);
    const LineInputRules &rules() const;

    /// While set, every text passes unchanged (for text set by code, which
    /// QLineEdit::setText() would otherwise run through the validator).
    void setPassThrough(bool on);

    State validate(QString &input, int &pos) const override;

private:
    LineInputRules m_rules;
    QString m_previous;
    bool m_passThrough = false;
};

/// The multi-line element of a line input, holding to the same rules.
class LineInputMemo : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit LineInputMemo(QWidget *parent = nullptr);

    void setRules(const LineInputRules &rules);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    void insertFiltered(const QString &text);

    LineInputRules m_rules;
};

} // namespace valtrona
