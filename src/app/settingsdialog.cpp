#include "app/settingsdialog.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/userdialogs.h"
#include "app/widgetfactory.h"
#include "controls/controlsupport.h"
#include "controls/vxborder.h"
#include "controls/vxcont.h"
#include "controls/vxlinein.h"
#include "core/inifile.h"
#include "core/settings.h"

namespace valtrona {

namespace {

struct LineSpec
{
    const char *key;
    const char *caption;
    const char *mask; // the one allowed digit; null: a number of any length
};

constexpr LineSpec lineSpecs[SettingsDialog::lineCount] = {
    {"PRZ", "JPG Kompression in % :", nullptr},
    {"INT", "GDI Interpolation :", "01234567"},
    {"SMT", "GDI Smoothing :", "01234"},
    {"PXL", "GDI PixelOffset :", "01234"},
    {"CMP", "GDI CompositingQuality :", "01234"},
    {"ORI", "EXIF Ausrichtung :", "01"},
};

} // namespace

SettingsDialog::SettingsDialog(QString settingsPath, std::shared_ptr<UserDialogs> dialogs, QWidget *parent)
    : QDialog(parent)
    , m_settingsPath(std::move(settingsPath))
    , m_dialogs(std::move(dialogs))
{
    setObjectName(QStringLiteral("B_CFG"));
    setWindowTitle(QStringLiteral("Konfiguration..."));
    // No window icon of its own: a null icon would fall back to the
    // application's, so the dialog gets a transparent one.
    QPixmap noIcon(16, 16);
    noIcon.fill(Qt::transparent);
    setWindowIcon(QIcon(noIcon));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    m_cmdAB = new QPushButton(QStringLiteral("&Schließen"), this);
    m_cmdAB->setObjectName(QStringLiteral("cmdAB"));
    m_cmdInit = new QPushButton(QStringLiteral("."), this);
    m_cmdInit->setObjectName(QStringLiteral("cmdInit"));
    m_cmdInit->setVisible(false);
    m_cmdSave = new QPushButton(QStringLiteral("S&peichern"), this);
    m_cmdSave->setObjectName(QStringLiteral("cmdSave"));

    auto *frame = new VxCont(this);
    frame->setBorderStyle(BorderStyleCode::ThreedInOut);
    frame->setCaptionFrame(QStringLiteral("Optionen : "));
    frame->setObjectName(QStringLiteral("Frame2"));
    auto *lines = new QVBoxLayout(frame);
    for (int i = 0; i < lineCount; ++i) {
        const LineSpec &entry = lineSpecs[i];
        m_keys[i] = QString::fromLatin1(entry.key);
        auto *line = new VxLineIn(frame);
        line->setObjectName(QStringLiteral("txtIni"));
        setControlArrayIndex(line, firstLine + i);
        line->setTag(m_keys[i]);
        line->setCaption(QString::fromUtf8(entry.caption));
        line->setLabelWidth(130);
        line->setButtonWidth(26);
        line->setMinimumWidth(4755 / 15);
        if (entry.mask) {
            line->setTextBoxStyle(9);
            line->setTextMask(QString::fromLatin1(entry.mask));
            line->setMaxLength(1);
            line->setButtonCaption(QStringLiteral("?"));
            line->setButtonToolTip(QStringLiteral("Erlaubte Werte"));
            line->setCommandStyle(4);
        } else {
            line->setTextBoxStyle(11);
            line->setButtonShow(false);
        }
        m_lines[i] = line;
        lines->addWidget(line);
        connect(line, &VxLineIn::change, this, [this] { m_dirty = 1; });
        connect(line, &VxLineIn::buttonClicked, this, [this, line] { showParameterHelp(line->tag()); });
    }
    fitLabelColumn(QList<VxLineIn *>(std::begin(m_lines), std::end(m_lines)), 130);
    // The frame reports a fixed size hint of its own; the lines decide.
    frame->setMinimumSize(lines->totalSizeHint());
    layout->addWidget(frame);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdInit);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdSave);
    buttons->addWidget(m_cmdAB);
    layout->addLayout(buttons);

    setTabOrder(m_cmdAB, m_cmdInit);
    setTabOrder(m_cmdInit, frame);
    setTabOrder(frame, m_lines[0]);
    for (int i = 1; i < lineCount; ++i)
        setTabOrder(m_lines[i - 1], m_lines[i]);
    setTabOrder(m_lines[lineCount - 1], m_cmdSave);

    // Enter presses the focused button; there is no default button, so
    // Enter in a line does not close the dialog unasked.
    m_cmdAB->setAutoDefault(true);
    m_cmdSave->setAutoDefault(true);
    m_cmdInit->setAutoDefault(false);

    connect(m_cmdInit, &QPushButton::clicked, this, &SettingsDialog::fill);
    connect(m_cmdSave, &QPushButton::clicked, this, &SettingsDialog::saveIfChanged);
    connect(m_cmdAB, &QPushButton::clicked, this, [this] {
        saveIfChanged();
        QDialog::done(QDialog::Accepted);
    });
}

QPushButton *SettingsDialog::initButton() const
{
    return m_cmdInit;
}

void SettingsDialog::fill()
{
    for (int i = 0; i < lineCount; ++i)
        m_lines[i]->setText(readIniString(m_settingsPath, ini::sectionJpg, m_keys[i]));
    m_dirty = 0;
}

void SettingsDialog::saveIfChanged()
{
    if (m_dirty == 0)
        return;
    const bool yes = m_dialogs->askYesNo(this, QStringLiteral("Speichern"),
                                         QStringLiteral("Wollen Sie Ihre Änderungen speichern ?"));
    if (yes && m_dirty == 1) {
        bool saved = true;
        for (int i = 0; i < lineCount; ++i)
            saved = writeIniString(m_settingsPath, ini::sectionJpg, m_keys[i], m_lines[i]->text()) && saved;
        if (!saved) {
            m_dialogs->information(this, QStringLiteral("Speichern"),
                                   QStringLiteral("Die Einstellungen konnten nicht gespeichert werden !"));
        }
    }
    m_dirty = 0;
}

bool SettingsDialog::isDirty() const
{
    return m_dirty != 0;
}

VxLineIn *SettingsDialog::line(int index) const
{
    const int i = index - firstLine;
    return i >= 0 && i < lineCount ? m_lines[i] : nullptr;
}

QStringList SettingsDialog::parameterHelp(const QString &key)
{
    if (key == QLatin1String("INT")) {
        return {QStringLiteral("0 = Default"), QStringLiteral("1 = LowQuality"), QStringLiteral("2 = HighQuality"),
                QStringLiteral("3 = Bilinear"), QStringLiteral("4 = Bicubic"), QStringLiteral("5 = NearestNeighbor"),
                QStringLiteral("6 = HighQualityBilinear"), QStringLiteral("7 = HighQualityBicubic")};
    }
    if (key == QLatin1String("SMT")) {
        return {QStringLiteral("0 = Default"), QStringLiteral("1 = HighSpeed"), QStringLiteral("2 = HighQuality"),
                QStringLiteral("3 = None"), QStringLiteral("4 = AntiAlias")};
    }
    if (key == QLatin1String("PXL")) {
        return {QStringLiteral("0 = Default"), QStringLiteral("1 = HighSpeed"), QStringLiteral("2 = HighQuality"),
                QStringLiteral("3 = None"), QStringLiteral("4 = Half")};
    }
    if (key == QLatin1String("CMP")) {
        return {QStringLiteral("0 = Default"), QStringLiteral("1 = HighSpeed"), QStringLiteral("2 = HighQuality"),
                QStringLiteral("3 = GammaCorrected"), QStringLiteral("4 = AssumeLinear")};
    }
    if (key == QLatin1String("ORI")) {
        return {QStringLiteral("0 = Bilder wie gespeichert"),
                QStringLiteral("1 = Bilder aufrichten, wie die EXIF-Ausrichtung angibt (auch wenn leer)")};
    }
    return {};
}

void SettingsDialog::reject()
{
    // Escape closes like the close box: the edits are offered for saving.
    saveIfChanged();
    QDialog::reject();
}

void SettingsDialog::closeEvent(QCloseEvent *event)
{
    saveIfChanged();
    QDialog::closeEvent(event);
}

void SettingsDialog::showParameterHelp(const QString &key)
{
    const QStringList lines = parameterHelp(key);
    if (lines.isEmpty())
        return;
    QString text;
    for (const QString &line : lines)
        text += line + QLatin1Char('\n');
    m_dialogs->information(this, QStringLiteral("GDI Parameterhilfe"), text);
}

} // namespace valtrona
