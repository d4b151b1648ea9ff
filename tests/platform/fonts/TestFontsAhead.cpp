#include <QFontDatabase>
#include <QTest>

#include "platform/fonts/FontsAhead.h"

using namespace vandrel;

class TestFontsAhead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFontsAreRead();
    void theToolkitMayAskMeanwhile();
};

void TestFontsAhead::theFontsAreRead()
{
    FontsAhead fonts;
    QVERIFY(fonts.wait());
}

void TestFontsAhead::theToolkitMayAskMeanwhile()
{
    const FontsAhead fonts;
    const FontsAhead others;
    QVERIFY(!QFontDatabase::families().isEmpty());
}

QTEST_MAIN(TestFontsAhead)
#include "TestFontsAhead.moc"
