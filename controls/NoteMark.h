#pragma once

#include <QObject>
#include <QTextObjectInterface>

namespace vandrel {

/// The marks of notes (richtext::NoteMark): each draws its number in its own format, raised or lowered as that says,
/// and is as wide as the number.
class NoteMark : public QObject, public QTextObjectInterface
{
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)

public:
    using QObject::QObject;

    QSizeF intrinsicSize(QTextDocument *document, int position, const QTextFormat &format) override;
    void drawObject(QPainter *painter,
                    const QRectF &rect,
                    QTextDocument *document,
                    int position,
                    const QTextFormat &format) override;
};

} // namespace vandrel
