#include "core/process/ChildStart.h"

#include "core/process/Descendants.h"
#include "core/process/PseudoTerminal.h"

#include <QFile>
#include <QProcessEnvironment>
#include <QStandardPaths>

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace larkspur {

namespace {

/// What the program itself was given is passed on byte by byte, also where it is no valid text.
QByteArray entryOf(const QString &name, const QString &value) {
    const QByteArray key = name.toLocal8Bit();
    const QByteArray own = qgetenv(key.constData());
    return key + '=' + (QString::fromLocal8Bit(own) == value ? own : value.toLocal8Bit());
}

/// In one piece, so that nothing of it is left where it would have been moved from.
QByteArray passwordEntry(const QByteArray &text) {
    QByteArray entry("LARKSPUR_ASKPASS_PASSWORD=");
    const qsizetype start = entry.size();
    entry.resize(start + text.size());
    std::memcpy(entry.data() + start, text.constData(), static_cast<std::size_t>(text.size()));
    return entry;
}

std::vector<char *> pointersTo(std::vector<QByteArray> &texts) {
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Signals that are ignored or blocked stay so through exec, and the program ignores some.
void listenToSignals() {
    struct sigaction byDefault{};
    byDefault.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &byDefault, nullptr);
    sigset_t none;
    sigemptyset(&none); // a macro on macOS
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

} // namespace

ChildStart::ChildStart(const QProcess &process, const TerminalConnection *terminal,
                       const std::optional<Password> &password, int keptOpen, const Descendants &descendants)
    : m_terminal(terminal)
    , m_keptOpen(keptOpen)
    , m_descendants(descendants) {
    if (password)
        prepareExec(process, *password);
}

ChildStart::~ChildStart() {
    if (!m_entries.empty())
        wipe(m_entries.back());
}

void ChildStart::prepareExec(const QProcess &process, const Password &password) {
    const QString program = process.program();
    m_words.push_back(QFile::encodeName(
        program.contains(QLatin1Char('/')) ? program : QStandardPaths::findExecutable(program)));
    for (const QString &argument : process.arguments())
        m_words.push_back(argument.toLocal8Bit());
    const QProcessEnvironment environment = process.processEnvironment();
    for (const QString &name : environment.keys())
        m_entries.push_back(entryOf(name, environment.value(name)));
    m_entries.push_back(passwordEntry(password.utf8()));
    m_arguments = pointersTo(m_words);
    m_environment = pointersTo(m_entries);
}

void ChildStart::run() const {
    ::setsid();
    if (m_terminal)
        m_terminal->enterInChild();
    if (m_keptOpen >= 0)
        ::fcntl(m_keptOpen, F_SETFD, 0); // the child's own flag: does not close at exec
    m_descendants.enterInChild();
    listenToSignals();
    if (!m_words.empty())
        ::execve(m_arguments[0], m_arguments.data(), m_environment.data());
}

} // namespace larkspur
