#include <QApplication>
#include <QIcon>

#include "app/mainwindow.h"
#include "app/translation.h"

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("valtrona"));
    QApplication::setDesktopFileName(QStringLiteral("valtrona"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/valtrona/valtrona.png")));
    valtrona::installQtGermanTranslation(app);

    valtrona::MainWindow window(valtrona::MainWindow::defaultEnvironment());
    if (!window.start())
        return 1;
    window.show();
    return QApplication::exec();
}
