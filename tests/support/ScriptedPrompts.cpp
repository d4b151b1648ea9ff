#include "tests/support/ScriptedPrompts.h"

#include <utility>

#include <QTest>

#include "runtime/ErrorReport.h"
#include "runtime/EventGate.h"

namespace vandrel::test {

namespace {

void fail(const QString &what)
{
    QTest::qFail(qPrintable(what), __FILE__, __LINE__);
}

template<typename Value>
void compare(const char *what, const std::optional<Value> &expected, const Value &shown)
{
    if (expected && *expected != shown)
        fail(QStringLiteral("A box has another %1 than announced.").arg(QString::fromUtf8(what)));
}

void compare(const char *what, const QString &expected, const QString &shown)
{
    if (expected != shown)
        fail(QStringLiteral("A box has the %1 \"%2\" instead of \"%3\".")
                 .arg(QString::fromUtf8(what), shown, expected));
}

Answer whenClosed(Buttons buttons)
{
    switch (buttons) {
    case Buttons::OkOnly:
        return Answer::Ok;
    case Buttons::YesNo:
        return Answer::No;
    case Buttons::YesNoCancel:
        return Answer::Cancel;
    }
    return Answer::Cancel;
}

} // namespace

ScriptedPrompts::Expectation &ScriptedPrompts::Expectation::buttons(Buttons expected)
{
    m_buttons = expected;
    return *this;
}

ScriptedPrompts::Expectation &ScriptedPrompts::Expectation::icon(BoxIcon expected)
{
    m_icon = expected;
    return *this;
}

ScriptedPrompts::Expectation &ScriptedPrompts::Expectation::answer(Answer given)
{
    m_answer = given;
    return *this;
}

ScriptedPrompts::Expectation &ScriptedPrompts::Expectation::type(const QString &typed)
{
    m_typed = typed;
    return *this;
}

ScriptedPrompts::Expectation &ScriptedPrompts::Expectation::offering(const QString &defaultText)
{
    m_defaultText = defaultText;
    return *this;
}

ScriptedPrompts::Expectation &ScriptedPrompts::Expectation::meanwhile(std::function<void()> action)
{
    m_meanwhile = std::move(action);
    return *this;
}

ScriptedPrompts::ScriptedPrompts()
{
    setPrompts(this);
}

ScriptedPrompts::~ScriptedPrompts()
{
    setPrompts(nullptr);
}

ScriptedPrompts::Expectation &ScriptedPrompts::announce(Expectation::Kind kind, const QString &text)
{
    Expectation &expectation = m_expected.emplace_back();
    expectation.m_kind = kind;
    expectation.m_text = text;
    return expectation;
}

ScriptedPrompts::Expectation &ScriptedPrompts::expect(const QString &text, const QString &title)
{
    Expectation &expectation = announce(Expectation::Kind::Message, text);
    expectation.m_title = title;
    return expectation;
}

ScriptedPrompts::Expectation &ScriptedPrompts::expectInput(const QString &prompt, const QString &title)
{
    Expectation &expectation = announce(Expectation::Kind::Input, prompt);
    expectation.m_title = title;
    return expectation;
}

ScriptedPrompts::Expectation &ScriptedPrompts::expectError(int number, const QString &text)
{
    Expectation &expectation = announce(Expectation::Kind::Error, text);
    expectation.m_errorNumber = number;
    return expectation;
}

bool ScriptedPrompts::allShown() const
{
    if (m_expected.empty())
        return true;
    const Expectation &first = m_expected.front();
    qWarning("%d announced boxes were not shown, the first: \"%s\" (error %d).",
             static_cast<int>(m_expected.size()), qPrintable(first.m_text), first.m_errorNumber);
    return false;
}

std::optional<ScriptedPrompts::Expectation> ScriptedPrompts::next(Expectation::Kind kind,
                                                                  const QString &shown)
{
    ++m_shown;
    if (m_expected.empty() || m_expected.front().m_kind != kind) {
        fail(QStringLiteral("A box was not announced: \"%1\".").arg(shown));
        return std::nullopt;
    }
    Expectation expectation = std::move(m_expected.front());
    m_expected.pop_front();
    return expectation;
}

Answer ScriptedPrompts::messageBox(const MessageBoxRequest &request)
{
    const EventGate::Hold hold;
    const std::optional<Expectation> expected = next(Expectation::Kind::Message, request.text);
    if (!expected)
        return whenClosed(request.buttons);
    compare("text", expected->m_text, request.text);
    compare("title", expected->m_title.value_or(QString()), request.title);
    compare("set of buttons", expected->m_buttons, request.buttons);
    compare("icon", expected->m_icon, request.icon);
    if (expected->m_meanwhile)
        expected->m_meanwhile();
    return expected->m_answer;
}

QString ScriptedPrompts::inputBox(const InputBoxRequest &request)
{
    const EventGate::Hold hold;
    const std::optional<Expectation> expected = next(Expectation::Kind::Input, request.prompt);
    if (!expected)
        return {};
    compare("prompt", expected->m_text, request.prompt);
    compare("title", expected->m_title.value_or(QString()), request.title);
    compare("default text", expected->m_defaultText, request.defaultText);
    if (expected->m_meanwhile)
        expected->m_meanwhile();
    return expected->m_typed;
}

void ScriptedPrompts::errorBox(const RuntimeError &failure)
{
    const EventGate::Hold hold;
    const std::optional<Expectation> expected
        = next(Expectation::Kind::Error, QStringLiteral("%1 %2").arg(failure.number()).arg(failure.text()));
    if (!expected)
        return;
    if (expected->m_errorNumber != failure.number())
        fail(QStringLiteral("Error %1 instead of %2: %3")
                 .arg(failure.number())
                 .arg(expected->m_errorNumber)
                 .arg(failure.text()));
    if (!expected->m_text.isEmpty())
        compare("error text", expected->m_text, failure.text());
    if (expected->m_meanwhile)
        expected->m_meanwhile();
}

ProgramEndSpy::ProgramEndSpy()
{
    setProgramEnd([this](int status) {
        ++m_count;
        m_status = status;
    });
}

ProgramEndSpy::~ProgramEndSpy()
{
    setProgramEnd({});
}

} // namespace vandrel::test
