#include "piceditor/ToolIcon.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

#include "runtime/RuntimeError.h"

// A static library's resources are registered by hand, from outside any namespace.
static void registerResources()
{
    Q_INIT_RESOURCE(piceditor);
}

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
    registerResources();
    QFile file(QStringLiteral(":/piceditor/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        throw RuntimeError(error::FileNotFound);
    return QIcon(new DrawingEngine(file.readAll(), ink));
}

} // namespace vandrel
