#include "app/translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

namespace valtrona {

bool installQtGermanTranslation(QCoreApplication &app)
{
    auto *translator = new QTranslator(&app);
    const QString dir = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    if (!translator->load(QStringLiteral("qtbase_de"), dir)) {
        delete translator;
        return false;
    }
    return QCoreApplication::installTranslator(translator);
}

} // namespace valtrona
