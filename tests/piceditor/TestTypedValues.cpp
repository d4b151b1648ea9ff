#include <memory>
#include <utility>

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "piceditor/ParameterDialog.h"
#include "piceditor/frmPicEdit.h"
#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/control/EngineImage.h"
#include "tests/platform/imaging/TestPictures.h"
#include "tests/support/AnsweringPrompts.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/ScriptedPrompts.h"

using namespace vandrel;
using namespace vandrel::test;
using namespace Qt::StringLiterals;

namespace {

const QStringList &typedTexts()
{
    static const QStringList texts{
        QString(),
        u" "_s,
        u"0"_s,
        u"-0"_s,
        u"-1"_s,
        u"0.0001"_s,
        u"0.5"_s,
        u"1"_s,
        u"45"_s,
        u"255"_s,
        u"-32768"_s,
        u"32768"_s,
        u"2147483647"_s,
        u"-2147483648"_s,
        u"2147483648"_s,
        u"99999999999999999999"_s,
        u"1e308"_s,
        u"-1e308"_s,
        u"1e400"_s,
        u"1e-400"_s,
        u"NaN"_s,
        u"inf"_s,
        u"-Infinity"_s,
        u"&HFFFFFFFF"_s,
        u"&H80000000"_s,
        u"twelve"_s,
        u"12 pixels"_s,
        u"1,5"_s,
        QString(5000, u'9'),
    };
    return texts;
}

} // namespace

/// What a user can type into the picture editor, on the engine: every text ends in a picture, or in a failure that has a
/// number, and the editor goes on.
class TestTypedValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void intoPrompts_data() { pictures(); }
    void intoPrompts();
    void intoDialogs_data() { pictures(); }
    void intoDialogs();
    void intoTheRatio();

private:
    static void pictures();
    void save(const Raster &picture);
    void open();
    /// Sets the area by its dialog.
    void setArea(const QStringList &corners);
    /// Opens a dialog, types into its boxes and presses OK.
    void fill(QAction *item, const WindowSlot &slot, const QStringList &texts);
    void checkPicture();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<AnsweringPrompts> m_prompts;
    std::unique_ptr<ProgramEndSpy> m_end;
    std::unique_ptr<frmPicEdit> m_form;
};

void TestTypedValues::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_prompts = std::make_unique<AnsweringPrompts>();
    m_end = std::make_unique<ProgramEndSpy>();
    auto drives = std::make_shared<DriveView>();
    drives->setDrive('c', m_folder->path().toLocal8Bit());
    drives->setDrive('z', "/");
    const EngineServices services{drives, nullptr, {}};
    m_form = std::make_unique<frmPicEdit>(PictureEditorControls{
        std::make_unique<EngineImage>(services), std::make_unique<EngineImage>(services),
        std::make_unique<FakeCommonDialog>(), std::make_unique<FakeCommonDialog>(), drives});
}

void TestTypedValues::cleanup()
{
    m_form.reset();
    m_end.reset();
    m_prompts.reset();
}

void TestTypedValues::pictures()
{
    QTest::addColumn<int>("bitsPerPixel");
    QTest::addColumn<QStringList>("area");
    const std::pair<const char *, QStringList> areas[]{
        {"all", {}},
        {"inside", {u"2"_s, u"3"_s, u"9"_s, u"8"_s}},
        {"across", {u"-5"_s, u"-5"_s, u"6"_s, u"100"_s}},
        {"outside", {u"500"_s, u"500"_s, u"600"_s, u"600"_s}},
    };
    for (const int bitsPerPixel : {1, 8, 24, 32}) {
        for (const auto &[name, corners] : areas)
            QTest::newRow(qPrintable(QStringLiteral("%1, %2").arg(bitsPerPixel).arg(QLatin1String(name))))
                << bitsPerPixel << corners;
    }
}

void TestTypedValues::save(const Raster &picture)
{
    const QString path = m_folder->filePath(u"typed.bmp"_s);
    savePicture(picture, path.toLocal8Bit(), path, SaveFormat::Bmp);
}

void TestTypedValues::open()
{
    m_form->OpenPictureFile(u"c:\\typed.bmp"_s);
}

void TestTypedValues::setArea(const QStringList &corners)
{
    if (!corners.isEmpty())
        fill(m_form->menus.set, m_form->Form7, corners);
}

void TestTypedValues::fill(QAction *item, const WindowSlot &slot, const QStringList &texts)
{
    item->trigger();
    auto *dialog = qobject_cast<ParameterDialog *>(slot.window());
    QVERIFY(dialog);
    const QList<QLineEdit *> boxes = dialog->findChildren<QLineEdit *>();
    for (qsizetype box = 0; box < boxes.size(); ++box)
        boxes[box]->setText(texts.value(box, texts.last()));
    dialog->Command1->click();
    // After a failure it stands open.
    if (QWidget *open = slot.window())
        open->close();
}

void TestTypedValues::checkPicture()
{
    const CImage &image = *m_form->c2;
    QVERIFY(image.Width() >= 1 && image.Height() >= 1);
    QVERIFY(image.Picture().Handle() != 0);
    for (const QString &box : std::exchange(m_prompts->shown, {}))
        QVERIFY2(box.startsWith(u"Enter ") || box == runtimeErrorText(error::Overflow)
                     || box == runtimeErrorText(error::TypeMismatch),
                 qPrintable(box));
}

void TestTypedValues::intoPrompts()
{
    QFETCH(int, bitsPerPixel);
    QFETCH(QStringList, area);
    const PicMenus &menus = m_form->menus;
    for (const QSize size : {QSize(13, 11), QSize(1, 1)}) {
        save(noisePicture(bitsPerPixel, size.width(), size.height()));
        for (const QString &text : typedTexts()) {
            open();
            setArea(area);
            m_prompts->type = [&text] { return text; };
            for (QAction *item :
                 {menus.blend, menus.brt, menus.con, menus.gam, menus.sharp, menus.mos, menus.rot}) {
                item->trigger();
                checkPicture();
            }
            menus.undo->trigger();
            checkPicture();
        }
    }
}

void TestTypedValues::intoDialogs()
{
    QFETCH(int, bitsPerPixel);
    QFETCH(QStringList, area);
    frmPicEdit &form = *m_form;
    const std::pair<QAction *, WindowSlot *> dialogs[]{
        {form.menus.but, &form.Form2},
        {form.menus.rgb, &form.Form3},
        {form.menus.hsl, &form.Form4},
        {form.menus.set, &form.Form7},
    };
    save(noisePicture(bitsPerPixel, 13, 11));
    for (const QString &text : typedTexts()) {
        open();
        setArea(area);
        for (const auto &[item, slot] : dialogs) {
            fill(item, *slot, {text, u"5"_s});
            checkPicture();
            fill(item, *slot, {u"5"_s, text});
            checkPicture();
        }
        // On whatever area came of the last of them.
        form.menus.neg->trigger();
        checkPicture();
    }
}

// A ratio makes another picture, or none: then the one there is stays.
void TestTypedValues::intoTheRatio()
{
    save(noisePicture(24, 13, 11));
    for (const QString &text : typedTexts()) {
        open();
        fill(m_form->menus.str, m_form->Form6, {text});
        checkPicture();
        m_form->menus.neg->trigger();
        checkPicture();
        m_form->menus.undo->trigger();
        checkPicture();
    }
}

QTEST_MAIN(TestTypedValues)
#include "TestTypedValues.moc"
