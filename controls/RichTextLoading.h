#pragma once

#include <memory>

#include <QObject>
#include <QTimer>

#include "controls/RichTextLoader.h"

class QTextEdit;

namespace vandrel {

class LoadProgress;

/// The state of a text box whose document is being read in the background: it takes no input, and after a second
/// it shows how far the reading has come, with a button that cancels it.
class RichTextLoading : public QObject
{
    Q_OBJECT

public:
    RichTextLoading(QTextEdit &box, std::shared_ptr<const DocumentFiles> files);
    ~RichTextLoading() override;

    /// Starts reading, in place of a reading under way.
    void start(const QString &dosPath);
    bool isRunning() const { return m_loader.isRunning(); }
    /// Ends a reading under way, and tells so.
    void cancel();
    /// Ends a reading under way in silence.
    void stop();
    void boxResized();

Q_SIGNALS:
    /// See RichTextLoader. The box takes input again.
    void loaded(const std::shared_ptr<vandrel::LoadedDocument> &result);
    void failed(const vandrel::RuntimeError &failure);
    void cancelled();

private:
    void showProgress();
    void release();

    QTextEdit &m_box;
    RichTextLoader m_loader;
    QTimer m_timer;
    LoadProgress *m_progress = nullptr;
    bool m_wasReadOnly = false;
};

} // namespace vandrel
