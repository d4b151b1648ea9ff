#pragma once

#include <QObject>
#include <QString>

namespace vandrel {

class CImage;
class Label;

/// Tells in a panel of the status bar how far long work of a picture control has come, with a busy pointer, and what
/// the control has to say about its last operation.
class WorkReport : public QObject
{
    Q_OBJECT

public:
    explicit WorkReport(Label &panel);
    ~WorkReport() override;

    /// Reports on that control as well.
    void follow(const CImage &image);
    /// Takes away what was said about the last operation: another begins.
    void clear();

private:
    void showProgress(double done);
    void say(const QString &sentence);
    void setBusy(bool busy);

    Label &m_panel;
    QString m_notice;
    bool m_isBusy = false;
};

} // namespace vandrel
