// The peer that the suite's start is measured against: one window of the about box's size with one line of
// text and one button, and nothing else.

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.setFixedSize(344, 281);
    QLabel text(QStringLiteral("A window with one line of text"), &window);
    text.move(40, 40);
    QPushButton button(QStringLiteral("&Quit"), &window);
    button.move(224, 248);
    QObject::connect(&button, &QPushButton::clicked, &window, &QWidget::close);
    window.show();
    return QApplication::exec();
}
