#include <QApplication>
#include <QIcon>
#include <QStringEncoder>

#include <cstdio>

#include "app/mainwindow.h"
#include "app/translation.h"
#include "core/fileservices.h"

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("valtrona"));
    QApplication::setDesktopFileName(QStringLiteral("valtrona"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/valtrona/valtrona.png")));
    valtrona::installQtGermanTranslation(app);

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
