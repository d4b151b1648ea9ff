#pragma once

#include <functional>
#include <future>

#include <QHostAddress>
#include <QList>
#include <QString>

namespace vandrel {

/// What is known of a host's name.
struct NameAnswer {
    /// In the order in which they should be tried (RFC 6724); empty when there are none.
    QList<QHostAddress> addresses;
    /// Why there are none, as a phrase ("Name or service not known"); empty when the name has just no address.
    QString problem;
};

/// Asks which addresses a name has, on a thread of its own: the system's resolver has no bound on its time. A lookup
/// that is destroyed before its answer leaves the thread to itself, which touches nothing of the program any more.
class NameLookup
{
public:
    /// Blocks until it knows; called on the lookup's own thread.
    using Resolver = std::function<NameAnswer(const QString &name)>;

    /// Begins to ask. With sixteen questions unanswered in the whole program it fails at once instead.
    NameLookup(const QString &name, const Resolver &resolver);

    /// Waits for the answer for that long; true once it is there.
    bool wait(int milliseconds) const;
    /// What wait() has promised; waits for it where that has not been done.
    NameAnswer answer() const;

    /// The system's resolver: its files, its name servers.
    static Resolver systemResolver();

private:
    std::shared_future<NameAnswer> m_answer;
};

} // namespace vandrel
