#pragma once

#include <memory>

#include <QAction>
#include <QScrollBar>
#include <QStringList>
#include <QTest>

#include "controls/PictureBox.h"
#include "piceditor/CornerHandle.h"
#include "piceditor/Shape.h"
#include "piceditor/frmPicEdit.h"
#include "tests/support/FakeCImage.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/ScriptedPrompts.h"

namespace vandrel::test {

/// The picture editor on scripted controls, and the hands of its user.
class PictureBench
{
public:
    PictureBench();

    /// Shows the window and waits until it is active.
    bool show() const;
    /// Opens a picture of that size through the menu, and forgets the calls of it.
    void open(QSize size, const QString &path = QStringLiteral("c:\\photo.jpg"), qint16 bitsPerPixel = 24);
    /// Opens a picture and leaves it modified by a blur.
    void openAndModify(const QString &path = QStringLiteral("c:\\photo.jpg"));
    /// Makes the inside of the window that large.
    void resizeClient(QSize size) const;

    /// What the picture controls were asked since the last time.
    QStringList takeCalls() const;
    /// What stands in a panel of the status bar: 1 size and depth, 2 pointer, 3 progress and notices.
    QString panel(int number) const;

    /// Presses a button at a point of the view's inside, moves to another and lets go.
    void drag(QPoint from, QPoint to, Qt::MouseButton button = Qt::LeftButton) const;
    void moveTo(QPoint point) const;
    void click(QPoint point, Qt::MouseButton button) const;
    /// The area that the window holds.
    QList<qint32> area() const;

    /// A dialog of the editor that is loaded; null when it is not.
    template<typename Form>
    Form *dialog(const WindowSlot &slot) const
    {
        return qobject_cast<Form *>(slot.window());
    }

    ScriptedPrompts prompts;
    ProgramEndSpy end;
    std::shared_ptr<QStringList> log = std::make_shared<QStringList>();
    std::shared_ptr<DriveView> drives = std::make_shared<DriveView>();
    FakeCImage *c1 = nullptr;
    FakeCImage *c2 = nullptr;
    FakeCommonDialog *cd1 = nullptr;
    FakeCommonDialog *cd2 = nullptr;
    std::unique_ptr<frmPicEdit> form;
};

} // namespace vandrel::test
