#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QWebEnginePage;

namespace vandrel {

/// A row under the page that finds words in it: Enter goes on, Shift+Enter goes back, Esc takes the row away.
class FindBar : public QWidget
{
    Q_OBJECT

public:
    explicit FindBar(QWebEnginePage *page, QWidget *parent = nullptr);

    /// Shows the row with the keyboard in its box.
    void open();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void find(bool backward);
    void closeRow();

    QWebEnginePage *m_page;
    QLineEdit *m_words;
    QLabel *m_found;
};

} // namespace vandrel
