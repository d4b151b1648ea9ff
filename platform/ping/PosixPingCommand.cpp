#include "platform/ping/PosixPingCommand.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>

#include "platform/ping/PingCommandOutput.h"
#include "platform/ping/PosixReadiness.h"

namespace vandrel {

namespace {

// From this length on the command writes a time of its own into the data's beginning.
constexpr qsizetype firstWithTime = 16;
// The pattern that fills a request takes no more.
constexpr qsizetype longestPattern = 16;
// The command is given this many milliseconds more than the reply: to start, and to say what came of it.
constexpr int grace = 2000;
constexpr qsizetype longestOutput = 16384;

// It calls itself by its first word, and is known by that in what it says.
QByteArrayList argumentsFor(const EchoQuestion &question)
{
    QByteArrayList arguments{"ping", "-n", "-c", "1"};
    arguments << "-W" << QByteArray::number(question.timeOut / 1000.0, 'f', 3);
    arguments << "-s" << QByteArray::number(question.data.size());
    if (!question.data.isEmpty())
        arguments << "-p" << question.data.left(longestPattern).toHex();
    return arguments << "--" << question.to.toString().toLatin1();
}

/// The command as it runs. It does not outlive this object.
class Child
{
public:
    Child(const QByteArray &program, const QByteArrayList &arguments, int output)
    {
        m_failure = start(program, arguments, output);
    }

    ~Child()
    {
        if (m_failure != 0)
            return;
        kill(m_process, SIGKILL);
        while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) { }
    }

    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    /// The system's error number where it did not start, or 0.
    int failure() const { return m_failure; }

private:
    int start(const QByteArray &program, QByteArrayList arguments, int output)
    {
        std::vector<char *> texts;
        for (QByteArray &argument : arguments)
            texts.push_back(argument.data());
        texts.push_back(nullptr);
        // Its words are read: they must be the ones it was written with.
        QByteArray language("LC_ALL=C");
        std::array<char *, 2> environment{language.data(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
        const int failure = posix_spawn(&m_process, program.constData(), &actions, nullptr, texts.data(),
                                        environment.data());
        posix_spawn_file_actions_destroy(&actions);
        return failure;
    }

    pid_t m_process = 0;
    int m_failure = 0;
};

/// Collects what the command prints until that decides.
class Listener
{
public:
    Listener(int input, int milliseconds, EchoPause &pause)
        : m_input(input), m_wait(input, milliseconds, pause)
    { }

    EchoOutcome listen()
    {
        while (true) {
            switch (m_wait.next()) {
            case ReadinessWait::Result::Cancelled:
                return EchoOutcome::failed(EchoOutcome::End::Cancelled);
            case ReadinessWait::Result::TimedOut:
                return EchoOutcome::failed(EchoOutcome::End::Silent);
            case ReadinessWait::Result::Ready:
                break;
            }
            const bool goesOn = readMore();
            if (auto outcome = readPingCommandOutput(m_output))
                return *outcome;
            if (!goesOn)
                return undecidedPingCommandOutput(m_output);
        }
    }

private:
    // False once there is no more, or more than the command can have to say.
    bool readMore()
    {
        std::array<char, 4096> part;
        const ssize_t size = read(m_input, part.data(), part.size());
        if (size > 0)
            m_output.append(part.data(), size);
        const bool isInterrupted = size < 0 && (errno == EINTR || errno == EAGAIN);
        return (size > 0 || isInterrupted) && m_output.size() < longestOutput;
    }

    const int m_input;
    ReadinessWait m_wait;
    QByteArray m_output;
};

// What the command's words leave open: the data that came back, and the time of a reply that it did not measure.
void complete(EchoOutcome &outcome, const EchoQuestion &question, qint64 elapsed)
{
    if (outcome.end != EchoOutcome::End::Replied)
        return;
    if (outcome.dataSize != question.data.size()) {
        outcome = EchoOutcome::failed(EchoOutcome::End::Silent);
        outcome.otherDataCame = true;
        return;
    }
    if (question.data.size() < firstWithTime)
        outcome.data = question.data;
    if (outcome.timeIsBound)
        outcome.nanoseconds = elapsed;
}

} // namespace

PosixPingCommand::PosixPingCommand(QString program) : m_program(std::move(program)) { }

EchoOutcome PosixPingCommand::ask(const EchoQuestion &question, EchoPause &pause)
{
    if (m_program.isEmpty())
        m_program = QStandardPaths::findExecutable(QStringLiteral("ping"));
    int ends[2];
    if (m_program.isEmpty() || pipe2(ends, O_CLOEXEC) != 0)
        return EchoOutcome::failed(EchoOutcome::End::NotPermitted);
    const Descriptor input(ends[0]);
    std::optional<Descriptor> output(ends[1]);
    QElapsedTimer elapsed;
    elapsed.start();
    const Child child(QFile::encodeName(m_program), argumentsFor(question), *output);
    output.reset();
    if (child.failure() != 0)
        return EchoOutcome::failed(EchoOutcome::End::NotPermitted);
    EchoOutcome outcome = Listener(input, question.timeOut + grace, pause).listen();
    complete(outcome, question, elapsed.nsecsElapsed());
    return outcome;
}

} // namespace vandrel
