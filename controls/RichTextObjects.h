#pragma once

#include <QObject>
#include <QTextObjectInterface>

namespace vandrel {

/// Things in a text that are kept and not shown: they draw nothing and take no room.
class HiddenObject : public QObject, public QTextObjectInterface
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

/// Inline pictures. A picture that cannot be shown is drawn as a thin frame of its size.
class PictureObject : public QObject, public QTextObjectInterface
{
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)

public:
    /// `pictures` holds the pictures of the documents that are drawn; null when each holds its own.
    explicit PictureObject(QTextDocument *pictures, QObject *parent);

    QSizeF intrinsicSize(QTextDocument *document, int position, const QTextFormat &format) override;
    void drawObject(QPainter *painter,
                    const QRectF &rect,
                    QTextDocument *document,
                    int position,
                    const QTextFormat &format) override;

private:
    QImage image(QTextDocument *document, const QTextFormat &format) const;

    QTextDocument *m_pictures;
};

/// Makes the layout of `document` show the suite's objects. To be called for every layout a document gets;
/// `pictures` as for PictureObject.
void registerRichTextObjects(QTextDocument &document, QTextDocument *pictures = nullptr);

} // namespace vandrel
