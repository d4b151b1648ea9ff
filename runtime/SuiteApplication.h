#pragma once

#include <QApplication>

namespace vandrel {

/// The application object: the last net for failures that reach the event loop unguarded.
class SuiteApplication : public QApplication
{
    Q_OBJECT

public:
    SuiteApplication(int &argc, char **argv);

    bool notify(QObject *receiver, QEvent *event) override;
};

} // namespace vandrel
