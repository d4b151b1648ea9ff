#pragma once

#include <QWidget>

namespace vandrel {

/// The inside of the editor's window, below its menu. The form's units are device-independent pixels.
class ClientArea : public QWidget
{
    Q_OBJECT

public:
    explicit ClientArea(QWidget *parent);

Q_SIGNALS:
    void Resize();
    /// A control of the program was dropped here, beside the widgets that take it themselves.
    void DragDrop(QObject *Source, float X, float Y);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
};

} // namespace vandrel
