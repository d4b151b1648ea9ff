#include "controls/RichTextDocument.h"

namespace vandrel {

RichTextDocument::RichTextDocument(QObject *parent) : QTextDocument(parent) { }

QString RichTextDocument::addPicture(const DocumentPicture &picture)
{
    const QString name = QStringLiteral("vandrel-picture:%1").arg(m_pictures.size() + 1);
    m_pictures.insert(name, picture);
    return name;
}

const DocumentPicture *RichTextDocument::picture(const QString &name) const
{
    const auto found = m_pictures.constFind(name);
    return found != m_pictures.constEnd() ? &*found : nullptr;
}

QVariant RichTextDocument::loadResource(int, const QUrl &)
{
    return {};
}

} // namespace vandrel
