#pragma once

#include <QStatusBar>
#include <QString>

namespace vandrel {

class StatusText;

/// A status bar. In its simple style it shows one text, cut with an ellipsis where it does not fit; a click on it, or
/// Space while it has the focus, raises Click.
class StatusBar : public QStatusBar
{
    Q_OBJECT

public:
    enum StyleKind { Normal = 0, Simple = 1 };

    explicit StatusBar(QWidget *parent = nullptr);

    StyleKind Style() const { return m_style; }
    void setStyle(StyleKind style);

    /// The whole text, however much of it is seen.
    QString SimpleText() const;
    void setSimpleText(const QString &text);

Q_SIGNALS:
    void Click();

private:
    StyleKind m_style = Normal;
    StatusText *m_text;
};

} // namespace vandrel
