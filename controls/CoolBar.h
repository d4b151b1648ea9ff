#pragma once

#include <QToolBar>

namespace vandrel {

/// A tool bar that holds strips of controls under the menu of a window. It stays where it is and cannot be
/// taken away, so no command is ever lost from sight.
class CoolBar : public QToolBar
{
    Q_OBJECT

public:
    /// `title` is what assistive tools call the bar.
    explicit CoolBar(const QString &title, QWidget *parent = nullptr);

    /// Adds a strip behind the others; the bar becomes its owner.
    void addBand(QWidget *strip);

Q_SIGNALS:
    /// The bar has another height, in twips.
    void HeightChanged(float NewHeight);

protected:
    void resizeEvent(QResizeEvent *event) override;
};

} // namespace vandrel
