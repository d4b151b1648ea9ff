#pragma once

#include <QDialog>

namespace vandrel {

/// A window with one chapter of the user guide.
class GuideWindow : public QDialog
{
    Q_OBJECT

public:
    /// `chapter` is its heading in the guide. Not modal.
    GuideWindow(const QString &chapter, QWidget *parent);
};

/// The chapter of a guide in Markdown under that heading of the second level, without the pictures, which a window does
/// not have; "" when there is no such chapter.
QString guideChapter(const QString &guide, const QString &heading);

} // namespace vandrel
