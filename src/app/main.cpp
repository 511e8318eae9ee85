#include <QApplication>
#include <QIcon>
#include <QPalette>
#include <QStringEncoder>
#include <QStyleFactory>

#include <cstdio>

#include "app/mainwindow.h"
#include "app/translation.h"
#include "core/fileservices.h"

namespace {

// A dark desktop as a dark platform theme gives it, for looking at the
// window's own colours on it: VALTRONA_PALETTE=dark. Read from the
// environment, so no file argument is ever taken for it.
void applyDarkPalette()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette;
    const QColor window(45, 45, 48);
    const QColor base(30, 30, 32);
    const QColor text(225, 225, 225);
    const QColor greyText(125, 125, 130);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, QColor(60, 60, 64));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, greyText);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(58, 58, 62));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, QColor(255, 110, 110));
    palette.setColor(QPalette::Light, QColor(75, 75, 80));
    palette.setColor(QPalette::Midlight, QColor(62, 62, 66));
    palette.setColor(QPalette::Mid, QColor(40, 40, 42));
    palette.setColor(QPalette::Dark, QColor(25, 25, 27));
    palette.setColor(QPalette::Shadow, QColor(10, 10, 10));
    palette.setColor(QPalette::Highlight, QColor(42, 110, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(110, 170, 240));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, greyText);
    palette.setColor(QPalette::Disabled, QPalette::Button, window);
    QApplication::setPalette(palette);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("valtrona"));
    QApplication::setDesktopFileName(QStringLiteral("valtrona"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/valtrona/valtrona.png")));
    valtrona::installQtGermanTranslation(app);
    if (qEnvironmentVariable("VALTRONA_PALETTE") == QLatin1String("dark"))
        applyDarkPalette();

    // What QApplication leaves of the arguments are files and folders to
    // open, taken from the raw bytes so that names which are not UTF-8 stay
    // distinct.
    QStringList paths;
    for (int i = 1; i < argc; ++i)
        paths.append(valtrona::files::fileNameFromNative(argv[i]));

    valtrona::MainWindow window(valtrona::MainWindow::defaultEnvironment());
    if (!window.start())
        return 1;
    const QStringList missing = window.addStartPaths(paths);
    for (const QString &path : missing) {
        // U+FFFD stands for a byte of the name that is not UTF-8.
        QStringEncoder toUtf8(QStringEncoder::Utf8);
        const QByteArray line = toUtf8(QStringLiteral("valtrona: „%1“ wurde nicht gefunden\n").arg(path));
        std::fwrite(line.constData(), 1, size_t(line.size()), stderr);
    }
    window.show();
    return QApplication::exec();
}
