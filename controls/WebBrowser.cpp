#include "controls/WebBrowser.h"

#include <algorithm>

#include "runtime/Twips.h"

namespace vandrel {

void WebBrowser::setLeft(int left)
{
    move(pixels(left), y());
}

void WebBrowser::setTop(int top)
{
    move(x(), pixels(top));
}

void WebBrowser::setWidth(int width)
{
    resize(std::max(pixels(width), 0), height());
}

void WebBrowser::setHeight(int height)
{
    resize(width(), std::max(pixels(height), 0));
}

} // namespace vandrel
