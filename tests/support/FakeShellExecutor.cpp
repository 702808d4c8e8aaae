#include "tests/support/FakeShellExecutor.h"

#include "core/output/LineSplitter.h"

#include <QTest>

#include <algorithm>

namespace larkspur::test {

void FakeShellExecutor::answer(const QString &arguments, const QByteArray &output, int exitCode,
                               const QByteArray &errors) {
    m_answers.insert(arguments, {output, errors, exitCode, {}});
}

void FakeShellExecutor::answerOnce(const QString &arguments, const QByteArray &output, int exitCode,
                                   std::function<void()> effect) {
    m_once[arguments].push_back({output, {}, exitCode, std::move(effect)});
}

void FakeShellExecutor::hold(const QString &arguments) {
    m_heldNames.append(arguments);
}

void FakeShellExecutor::release(const QString &arguments, const QByteArray &output, int exitCode) {
    auto &waiting = m_held[arguments];
    QVERIFY2(!waiting.empty(), qPrintable(QStringLiteral("nothing is held for: ") + arguments));
    Completion<Answer> next = waiting.front();
    waiting.pop_front();
    next.complete({output, {}, exitCode, {}});
}

Task<ShellResult> FakeShellExecutor::run(ShellCommand command) {
    const QString arguments = command.arguments.join(QLatin1Char(' '));
    m_commands.append(command);
    m_mostAtOnce = std::max(m_mostAtOnce, ++m_running);
    ShellResult result;
    result.commandLine = command.commandLine();
    Answer answer;
    if (command.program == QLatin1String("copy") && onCopy) {
        --m_running;
        result.exitCode = m_answers.value("copy").exitCode;
        if (result.exitCode == 0)
            onCopy(command.arguments.value(0), command.arguments.value(1));
        co_return result;
    }
    if (onAny) {
        answer.output = onAny(command);
    } else if (m_heldNames.contains(arguments)) {
        Completion<Answer> released;
        m_held[arguments].push_back(released);
        const std::stop_callback onStop(command.stop,
                                        [released]() mutable { released.complete({{}, {}, -1, {}}); });
        answer = co_await released;
    } else if (auto &once = m_once[arguments]; !once.empty()) {
        answer = once.front();
        once.pop_front();
        if (answer.effect)
            answer.effect();
    } else if (const auto scripted = m_answers.constFind(arguments); scripted != m_answers.constEnd()) {
        answer = *scripted;
    } else {
        QTest::qFail(qPrintable(QStringLiteral("unexpected command: ") + arguments), __FILE__, __LINE__);
        answer.exitCode = 1;
    }
    --m_running;
    result.outputBytes = answer.output;
    result.errorBytes = answer.errors;
    result.exitCode = answer.exitCode;
    if (command.stop.stop_requested() && answer.exitCode == -1)
        result.end = ProcessEnd::Stopped;
    if (command.onOutput) {
        LineSplitter splitter;
        for (const QByteArray &text : {answer.output, answer.errors})
            if (!text.isEmpty())
                command.onOutput({0, splitter.feed(text) + splitter.finish(), false});
    }
    co_return result;
}

QStringList FakeShellExecutor::commandLines() const {
    QStringList lines;
    for (const ShellCommand &command : m_commands)
        lines.append(command.arguments.join(QLatin1Char(' ')));
    return lines;
}

} // namespace larkspur::test
