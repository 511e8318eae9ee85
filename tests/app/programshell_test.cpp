#include <QApplication>
#include <QIcon>
#include <QMessageBox>
#include <QPushButton>

#include <gtest/gtest.h>

#include "app/translation.h"

namespace {

TEST(QtGermanTranslation, StandardButtonsReadGerman)
{
    ASSERT_TRUE(valtrona::installQtGermanTranslation(*qApp));
    QMessageBox box(QMessageBox::Question, QStringLiteral("Entfernen"), QStringLiteral("?"),
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    EXPECT_EQ(box.button(QMessageBox::Yes)->text().remove(QLatin1Char('&')), QStringLiteral("Ja"));
    EXPECT_EQ(box.button(QMessageBox::No)->text().remove(QLatin1Char('&')), QStringLiteral("Nein"));
    EXPECT_EQ(box.button(QMessageBox::Cancel)->text().remove(QLatin1Char('&')), QStringLiteral("Abbrechen"));
}

TEST(ProgramIcon, TravelsInsideTheBinary)
{
    const QIcon icon(QStringLiteral(":/valtrona/valtrona.png"));
    ASSERT_FALSE(icon.isNull());
    EXPECT_EQ(icon.pixmap(256, 256).size(), QSize(256, 256));
}

} // namespace
