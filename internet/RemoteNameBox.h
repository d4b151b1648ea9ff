#pragma once

#include <QLineEdit>
#include <QString>

namespace vandrel {

/// What a person reads for a name, a path or a text with names from a server: an octet that is no UTF-8 stands in them as
/// a private character U+F000 + octet, which no font has. It becomes the character that it is in Latin-1, or a picture of
/// what it stands for. Every character becomes one character.
QString readableRemoteText(QString text);

/// A text box for a name on a server. It shows the name as a person reads it; what is not typed over stays in the name as
/// the server has it.
class RemoteNameBox : public QLineEdit
{
    Q_OBJECT

public:
    explicit RemoteNameBox(QWidget *parent = nullptr);

    /// The name as the FTP control takes it.
    QString name() const { return m_name; }
    void setName(const QString &name);

private:
    void follow(const QString &text);

    QString m_name;
    QString m_shown;
};

} // namespace vandrel
