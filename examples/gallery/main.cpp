#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QLocale>
#include <QPalette>
#include <QStyleFactory>
#include <QTimer>
#include <QTranslator>

#include "gallerywindow.h"

using namespace Qt::StringLiterals;

namespace {

QPalette darkPalette()
{
    QPalette palette;
    const QColor window(45, 45, 48);
    const QColor base(30, 30, 32);
    const QColor text(225, 225, 225);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Light, QColor(90, 90, 95));
    palette.setColor(QPalette::Midlight, QColor(70, 70, 74));
    palette.setColor(QPalette::Mid, QColor(55, 55, 58));
    palette.setColor(QPalette::Dark, QColor(25, 25, 27));
    palette.setColor(QPalette::Shadow, QColor(10, 10, 10));
    palette.setColor(QPalette::Highlight, QColor(56, 117, 215));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(120, 120, 120));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(120, 120, 120));
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(120, 120, 120));
    return palette;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(u"valtrona-gallery"_s);
    QApplication::setApplicationDisplayName(u"Valtrona – Steuerelemente"_s);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));

    QTranslator qtTexts;
    if (qtTexts.load(QLocale(QLocale::German), u"qtbase"_s, u"_"_s,
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&qtTexts);

    QCommandLineParser parser;
    parser.setApplicationDescription(u"Shows every control of the library in its main variants."_s);
    parser.addHelpOption();
    const QCommandLineOption dark(u"dark"_s, u"Use a dark palette."_s);
    const QCommandLineOption screenshot(u"screenshot"_s,
                                        u"Save every page as <prefix>-<n>.png and quit."_s, u"prefix"_s);
    parser.addOption(dark);
    parser.addOption(screenshot);
    parser.process(app);

    if (parser.isSet(dark))
        QApplication::setPalette(darkPalette());

    valtrona::GalleryWindow window;
    window.resize(1280, 760);
    window.show();

    if (parser.isSet(screenshot)) {
        const QString prefix = parser.value(screenshot);
        window.freezeFloods(40);
        // Let the floods run a few steps and the pictures settle first.
        QTimer::singleShot(1500, &window, [&window, prefix] {
            QApplication::exit(window.saveScreenshots(prefix) ? 0 : 1);
        });
    }
    return QApplication::exec();
}
