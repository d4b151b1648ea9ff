#include "runtime/Placement.h"

#include <algorithm>
#include <cmath>

#include <QAbstractButton>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QLabel>
#include <QStyle>

#include "runtime/Twips.h"

namespace vandrel {

namespace {

// What a push button's own size hint asks for is not used: styles enlarge it far beyond its caption.
int captionWidth(const QAbstractButton &button)
{
    const int margins = button.style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, &button) * 2
        + button.style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, &button) * 2;
    return button.fontMetrics().size(Qt::TextShowMnemonic, button.text()).width() + margins;
}

int neededWidth(const QWidget &widget)
{
    if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
        return captionWidth(*button);
    if (const auto *label = qobject_cast<const QLabel *>(&widget); label && !label->wordWrap())
        return label->sizeHint().width();
    return 0;
}

// The family itself where it is installed, else the one in its place. Whatever else a font names, be it only its
// substitute, makes the toolkit sort every font of the system for what comes nearest, once for each style.
QString installedFamily(const QString &stated)
{
    const QStringList installed = QFontDatabase::families();
    // The toolkit keeps the names of substitutes in small letters.
    const QString substitute = QFont::substitute(stated);
    const auto found = std::find_if(installed.begin(), installed.end(), [&substitute](const QString &family) {
        return family.compare(substitute, Qt::CaseInsensitive) == 0;
    });
    return installed.contains(stated, Qt::CaseInsensitive) || found == installed.end() ? stated : *found;
}

} // namespace

void placeInTwips(QWidget *widget, int left, int top, int width, int height)
{
    QRect place = pixelRect(left, top, width, height);
    place.setWidth(std::max(place.width(), neededWidth(*widget)));
    widget->setGeometry(place);
}

QFont fontOf(const StatedFont &stated)
{
    QFont font(installedFamily(stated.family));
    font.setPixelSize(static_cast<int>(std::lround(stated.points * 96 / 72)));
    font.setBold(stated.bold);
    font.setItalic(stated.italic);
    return font;
}

} // namespace vandrel
