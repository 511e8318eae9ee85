#include <QFileDialog>
#include <QListView>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

#include "app/userdialogs.h"
#include "support/testsupport.h"

using valtrona::StandardDialogs;
using valtrona::test::Sandbox;

namespace {

TEST(StandardOpenDialog, ImageFilterMatchesExtensionsInAnyLetterCase)
{
    Sandbox sandbox;
    // Qt's file dialog remembers its folders in the user's configuration.
    const valtrona::test::ScopedEnvironment config("XDG_CONFIG_HOME", sandbox.filePath(QStringLiteral("config")));
    for (const char *name : {"a.JPG", "b.Png", "c.jpg", "d.TiF", "notes.txt", "e.jpeg"})
        sandbox.writeFile(QString::fromLatin1(name), "x");

    const std::unique_ptr<QFileDialog> dialog(StandardDialogs::createOpenDialog(
        nullptr, QStringLiteral("Dateien wählen :"),
        {QStringLiteral("Bilddateien (*.jpg *.gif *.bmp *.png *.tif)"), QStringLiteral("Alle Dateien (*.*)")}));
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFiles);
    dialog->setDirectory(sandbox.path());
    dialog->show();

    auto *view = dialog->findChild<QListView *>(QStringLiteral("listView"));
    ASSERT_NE(view, nullptr);
    auto visibleNames = [&] {
        QStringList names;
        for (int row = 0; row < view->model()->rowCount(view->rootIndex()); ++row)
            names.append(view->model()->index(row, 0, view->rootIndex()).data().toString());
        names.sort();
        return names;
    };
    const QStringList images = {QStringLiteral("a.JPG"), QStringLiteral("b.Png"), QStringLiteral("c.jpg"),
                                QStringLiteral("d.TiF")};
    // The file system model fills in the background.
    EXPECT_TRUE(QTest::qWaitFor([&] { return visibleNames() == images; }, 5000))
        << visibleNames().join(u' ').toStdString();
}

} // namespace
