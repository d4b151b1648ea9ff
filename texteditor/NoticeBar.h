#pragma once

#include <QFrame>
#include <QStringList>

class QLabel;
class QScrollArea;

namespace vandrel {

/// A quiet bar above a document with sentences for the user, which stays until it is closed. Long notices are
/// scrolled, so that the document keeps its room.
class NoticeBar : public QFrame
{
    Q_OBJECT

public:
    explicit NoticeBar(QWidget *parent = nullptr);

    /// Shows the sentences, or hides the bar when there is none.
    void setNotices(const QStringList &sentences);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void adjustHeight();

    QScrollArea *m_view;
    QLabel *m_text;
};

} // namespace vandrel
