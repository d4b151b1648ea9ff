#pragma once

#include <QImage>
#include <QList>
#include <QWidget>

namespace vandrel {

/// A picture in sizes to show it in, each half as large as the one before.
using PictureSizes = QList<QImage>;

/// Makes the sizes of a picture; takes its time, on any thread.
PictureSizes pictureSizes(QImage picture);

/// Shows a captured picture, fitted to the window whatever its size, with its proportions kept. Esc closes it.
class PreviewWindow : public QWidget
{
    Q_OBJECT

public:
    PreviewWindow();

    /// Shows another picture; `name` is the file that it was saved to. A window out of sight gets half the screen at
    /// most.
    void present(const PictureSizes &sizes, const QString &name);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    PictureSizes m_sizes;
};

} // namespace vandrel
