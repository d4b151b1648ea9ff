#pragma once

#include <deque>
#include <functional>
#include <optional>

#include <QString>

#include "runtime/Prompts.h"

namespace vandrel::test {

/// Prompts that are answered in advance. In force from construction to destruction. Every box must have been
/// announced, in order; one that was not, or that differs from its announcement, fails the running test (and
/// is answered as if closed). End a test with `QVERIFY(prompts.allShown())`.
///
///     prompts.expect(u"Are you sure?"_qs, u""_qs).buttons(Buttons::YesNo).answer(Answer::Yes);
///     prompts.expectInput(u"Enter the text to search for:"_qs, u"Find"_qs).type(u"word"_qs);
///     prompts.expectError(error::Overflow);
class ScriptedPrompts final : public Prompts
{
public:
    /// One announced box; the calls refine it and can be chained.
    class Expectation
    {
    public:
        /// The buttons the box must have; left out, any will do.
        Expectation &buttons(Buttons expected);
        /// The icon the box must have; left out, any will do.
        Expectation &icon(BoxIcon expected);
        /// What the box answers; left out, Ok for a message and "" for an input box.
        Expectation &answer(Answer given);
        /// What is typed into an input box. Leaving it out is Cancel.
        Expectation &type(const QString &typed);
        /// The default text an input box must offer; left out, any will do.
        Expectation &offering(const QString &defaultText);
        /// Runs while the box is open: what the user, or an event, does meanwhile.
        Expectation &meanwhile(std::function<void()> action);

    private:
        friend class ScriptedPrompts;
        enum class Kind { Message, Input, Error };

        Kind m_kind = Kind::Message;
        QString m_text;
        std::optional<QString> m_title;
        std::optional<Buttons> m_buttons;
        std::optional<BoxIcon> m_icon;
        Answer m_answer = Answer::Ok;
        QString m_typed;
        std::optional<QString> m_defaultText;
        int m_errorNumber = 0;
        std::function<void()> m_meanwhile;
    };

    ScriptedPrompts();
    ~ScriptedPrompts() override;
    ScriptedPrompts(const ScriptedPrompts &) = delete;
    ScriptedPrompts &operator=(const ScriptedPrompts &) = delete;

    /// Announces a message box with exactly that text and title.
    Expectation &expect(const QString &text, const QString &title);
    /// Announces an input box with exactly that prompt and title.
    Expectation &expectInput(const QString &prompt, const QString &title);
    /// Announces the default error box of that number; a non-empty text must be the error's own.
    Expectation &expectError(int number, const QString &text = {});

    /// True when every announced box was shown; a warning names the first that was not.
    bool allShown() const;
    /// How many boxes were shown so far.
    int shown() const { return m_shown; }

    Answer messageBox(const MessageBoxRequest &request) override;
    QString inputBox(const InputBoxRequest &request) override;
    void errorBox(const RuntimeError &failure) override;

private:
    Expectation &announce(Expectation::Kind kind, const QString &text);
    std::optional<Expectation> next(Expectation::Kind kind, const QString &shown);

    std::deque<Expectation> m_expected;
    int m_shown = 0;
};

/// Catches the end of the program: ends are counted and the program goes on. In force from construction to
/// destruction.
class ProgramEndSpy
{
public:
    ProgramEndSpy();
    ~ProgramEndSpy();
    ProgramEndSpy(const ProgramEndSpy &) = delete;
    ProgramEndSpy &operator=(const ProgramEndSpy &) = delete;

    int count() const { return m_count; }
    int status() const { return m_status; }

private:
    int m_count = 0;
    int m_status = 0;
};

} // namespace vandrel::test
