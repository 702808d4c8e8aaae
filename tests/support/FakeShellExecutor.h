#pragma once

#include "core/async/Completion.h"
#include "core/process/ShellExecutor.h"

#include <QHash>
#include <QList>

#include <deque>
#include <functional>

namespace larkspur::test {

/// Answers scripted argument lists without any process. An argument list that nobody scripted fails the test.
class FakeShellExecutor final : public ShellExecutor {
  public:
    /// The answer to a command line, program left out.
    void answer(const QString &arguments, const QByteArray &output, int exitCode = 0,
                const QByteArray &errors = {});
    /// The same for one run; several are given in their order before the lasting answer. `effect` is what the
    /// child does.
    void answerOnce(const QString &arguments, const QByteArray &output, int exitCode = 0,
                    std::function<void()> effect = {});
    /// The child runs until `release` lets it end.
    void hold(const QString &arguments);
    bool isHeld(const QString &arguments) const { return !m_held.value(arguments).empty(); }
    void release(const QString &arguments, const QByteArray &output = {}, int exitCode = 0);

    /// What a program called "copy" does with its last two words, unless it was told what to answer.
    std::function<void(const QString &, const QString &)> onCopy = {};

    /// What any command prints, whatever is scripted.
    std::function<QByteArray(const ShellCommand &)> onAny = {};

    Task<ShellResult> run(ShellCommand command) override;

    const QList<ShellCommand> &commands() const { return m_commands; }
    QStringList commandLines() const;
    int running() const { return m_running; }
    int mostAtOnce() const { return m_mostAtOnce; }

  private:
    struct Answer {
        QByteArray output;
        QByteArray errors;
        int exitCode = 0;
        std::function<void()> effect = {};
    };
    QHash<QString, std::deque<Answer>> m_once;
    QHash<QString, Answer> m_answers;
    QHash<QString, std::deque<Completion<Answer>>> m_held;
    QList<QString> m_heldNames;
    QList<ShellCommand> m_commands;
    int m_running = 0;
    int m_mostAtOnce = 0;
};

} // namespace larkspur::test
