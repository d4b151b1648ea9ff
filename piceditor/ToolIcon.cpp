#include "piceditor/ToolIcon.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

#include "piceditor/Resources.h"

namespace vandrel {

namespace {

// What the drawings have in place of the outlines' colour.
constexpr QByteArrayView inkInDrawing("#010203");
constexpr double disabledOpacity = 0.35;

class DrawingEngine final : public QIconEngine
{
public:
    DrawingEngine(QByteArray drawing, const QColor &ink) : m_drawing(std::move(drawing)), m_ink(ink) { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QColor ink = m_ink.isValid() ? m_ink : QGuiApplication::palette().buttonText().color();
        QByteArray drawing = m_drawing;
        drawing.replace(inkInDrawing, ink.name().toLatin1());
        painter->save();
        if (mode == QIcon::Disabled)
            painter->setOpacity(painter->opacity() * disabledOpacity);
        QSvgRenderer(drawing).render(painter, rect);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect({}, size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new DrawingEngine(*this); }

private:
    QByteArray m_drawing;
    QColor m_ink;
};

} // namespace

QIcon toolIcon(const QString &name, const QColor &ink)
{
    return QIcon(new DrawingEngine(picEditorResource(name + QStringLiteral(".svg")), ink));
}

} // namespace vandrel
