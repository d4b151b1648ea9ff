#pragma once

#include <functional>

#include <QStringList>

#include "runtime/Prompts.h"

namespace vandrel::test {

/// Prompts that are answered at once, whatever they ask, and noted. In force from construction to destruction. For
/// tests that are about something else than the boxes.
class AnsweringPrompts final : public Prompts
{
public:
    AnsweringPrompts() { setPrompts(this); }
    ~AnsweringPrompts() override { setPrompts(nullptr); }
    AnsweringPrompts(const AnsweringPrompts &) = delete;
    AnsweringPrompts &operator=(const AnsweringPrompts &) = delete;

    /// What a message box answers; one button's Ok and else No, unless it is replaced.
    std::function<Answer(const MessageBoxRequest &)> answer = [](const MessageBoxRequest &request) {
        return request.buttons == Buttons::OkOnly ? Answer::Ok : Answer::No;
    };
    /// What is typed into an input box; nothing, which is Cancel, unless it is replaced.
    std::function<QString()> type = [] { return QString(); };

    /// What was shown so far, message by message.
    QStringList shown;

    Answer messageBox(const MessageBoxRequest &request) override
    {
        shown += request.text;
        return answer(request);
    }
    QString inputBox(const InputBoxRequest &request) override
    {
        shown += request.prompt;
        return type();
    }
    void errorBox(const RuntimeError &failure) override { shown += failure.text(); }
};

} // namespace vandrel::test
