#pragma once

#include <QStatusBar>
#include <QString>

namespace vandrel {

class ElidedLabel;
class Label;

/// A status bar. In its simple style it shows one text, a click on which, or Space while it has the focus, raises Click;
/// in its normal style it shows panels, each with a text of its own. A text that does not fit is cut with an ellipsis.
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

    /// Adds a panel behind the others, wide enough for `sample`; panels with a stretch share the room that is left. The
    /// panel is the bar's, and setText() sets its text.
    Label *addPanel(const QString &name, const QString &sample, int stretch = 0);

Q_SIGNALS:
    void Click();

private:
    StyleKind m_style = Normal;
    ElidedLabel *m_text;
};

} // namespace vandrel
