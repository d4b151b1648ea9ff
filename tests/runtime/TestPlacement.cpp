#include <algorithm>

#include <QFontDatabase>
#include <QFontInfo>
#include <QPushButton>
#include <QTest>

#include "runtime/Placement.h"

using namespace vandrel;

class TestPlacement : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aBoxLiesWhereItIsStated();
    void aBoxTooNarrowForItsCaptionIsWidenedOnly();
    void aFontHasTheStatedSizeAndStyle();
    void aFamilyThatIsInstalledIsTaken();
    void aFamilyInTheMissingOnesPlaceIsTaken();
    void aMissingFamilyWithoutOneInItsPlaceIsLeftToTheToolkit();
};

namespace {

QString installedFamily()
{
    // One without a foundry in its name.
    const QStringList families = QFontDatabase::families();
    return *std::find_if(families.begin(), families.end(),
                         [](const QString &name) { return !name.contains(u'['); });
}

} // namespace

void TestPlacement::aBoxLiesWhereItIsStated()
{
    QWidget box;
    placeInTwips(&box, 150, 300, 1500, 375);
    QCOMPARE(box.geometry(), QRect(10, 20, 100, 25));
}

void TestPlacement::aBoxTooNarrowForItsCaptionIsWidenedOnly()
{
    QPushButton button(QStringLiteral("A caption that no box of this width can hold"));
    placeInTwips(&button, 0, 0, 300, 375);
    QVERIFY(button.width() > 20);
    QCOMPARE(button.height(), 25);
}

void TestPlacement::aFontHasTheStatedSizeAndStyle()
{
    const QFont font = fontOf({installedFamily(), 27.75, true, true});
    QCOMPARE(font.pixelSize(), 37);
    QVERIFY(font.bold());
    QVERIFY(font.italic());
    QVERIFY(!fontOf({installedFamily(), 9}).bold());
}

void TestPlacement::aFamilyThatIsInstalledIsTaken()
{
    QCOMPARE(fontOf({installedFamily(), 9}).families(), QStringList{installedFamily()});
}

void TestPlacement::aFamilyInTheMissingOnesPlaceIsTaken()
{
    const QString missing = QStringLiteral("No Such Face");
    QFont::insertSubstitution(missing, installedFamily());
    const QFont font = fontOf({missing, 9});
    QFont::removeSubstitutions(missing);
    QCOMPARE(font.families(), QStringList{installedFamily()});
    QCOMPARE(QFontInfo(font).family(), QFontInfo(QFont(installedFamily())).family());
}

void TestPlacement::aMissingFamilyWithoutOneInItsPlaceIsLeftToTheToolkit()
{
    const QString missing = QStringLiteral("No Such Face");
    QCOMPARE(fontOf({missing, 9}).families(), QStringList{missing});
    QFont::insertSubstitution(missing, QStringLiteral("Nor This One"));
    const QFont font = fontOf({missing, 9});
    QFont::removeSubstitutions(missing);
    QCOMPARE(font.families(), QStringList{missing});
}

QTEST_MAIN(TestPlacement)
#include "TestPlacement.moc"
