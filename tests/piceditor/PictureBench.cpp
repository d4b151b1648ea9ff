#include "tests/piceditor/PictureBench.h"

#include <utility>

#include <QMouseEvent>

#include "controls/Label.h"
#include "piceditor/ClientArea.h"

namespace vandrel::test {

PictureBench::PictureBench()
{
    drives->setDrive('c', "/home/user");
    drives->setDrive('z', "/");
    auto fileImage = std::make_unique<FakeCImage>(QStringLiteral("c1"), log);
    auto workingImage = std::make_unique<FakeCImage>(QStringLiteral("c2"), log);
    auto openDialog = std::make_unique<FakeCommonDialog>();
    auto saveDialog = std::make_unique<FakeCommonDialog>();
    c1 = fileImage.get();
    c2 = workingImage.get();
    cd1 = openDialog.get();
    cd2 = saveDialog.get();
    form = std::make_unique<frmPicEdit>(PictureEditorControls{
        std::move(fileImage), std::move(workingImage), std::move(openDialog), std::move(saveDialog), drives});
}

bool PictureBench::show() const
{
    form->show();
    form->activateWindow();
    return QTest::qWaitForWindowActive(form.get());
}

void PictureBench::open(QSize size, const QString &path, qint16 bitsPerPixel)
{
    c1->files[path] = {size, bitsPerPixel};
    cd1->choose(path);
    form->menus.opn->trigger();
    log->clear();
}

void PictureBench::openAndModify(const QString &path)
{
    open({640, 480}, path);
    form->menus.blur->trigger();
    log->clear();
}

void PictureBench::resizeClient(QSize size) const
{
    form->resize(form->size() + size - form->client->size());
}

QStringList PictureBench::takeCalls() const
{
    return std::exchange(*log, {});
}

QString PictureBench::panel(int number) const
{
    return form->findChild<Label *>(QStringLiteral("Panel%1").arg(number))->text();
}

void PictureBench::drag(QPoint from, QPoint to, Qt::MouseButton button) const
{
    PictureBox *Pic1 = form->view.Pic1;
    const QPoint inside = Pic1->contentsRect().topLeft();
    moveTo(from);
    QTest::mousePress(Pic1, button, {}, from + inside);
    moveTo(to);
    QTest::mouseRelease(Pic1, button, {}, to + inside);
}

// Sent as an event: the system reports no movement of a pointer that already stands there.
void PictureBench::moveTo(QPoint point) const
{
    PictureBox *Pic1 = form->view.Pic1;
    const QPointF at = point + Pic1->contentsRect().topLeft();
    QMouseEvent move(QEvent::MouseMove, at, Pic1->mapToGlobal(at), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(Pic1, &move);
}

void PictureBench::click(QPoint point, Qt::MouseButton button) const
{
    PictureBox *Pic1 = form->view.Pic1;
    QTest::mouseClick(Pic1, button, {}, point + Pic1->contentsRect().topLeft());
}

QList<qint32> PictureBench::area() const
{
    return {form->lAreaLeft, form->lAreaTop, form->lAreaRight, form->lAreaBottom};
}

} // namespace vandrel::test
