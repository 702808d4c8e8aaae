#include "cli/ControllingTerminal.h"

#include "core/async/Completion.h"
#include "core/authorization/Password.h"
#include "core/output/TerminalSafeText.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace larkspur::cli {

namespace {

/// /dev/tty as long as the object lives; the echo is put back with it.
class OpenTerminal {
  public:
    OpenTerminal()
        : m_file(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {}
    OpenTerminal(const OpenTerminal &) = delete;
    OpenTerminal &operator=(const OpenTerminal &) = delete;
    ~OpenTerminal() {
        if (m_isQuiet)
            ::tcsetattr(m_file, TCSAFLUSH, &m_before);
        if (m_file >= 0)
            ::close(m_file);
    }

    int file() const { return m_file; }
    bool isOpen() const { return m_file >= 0; }
    bool hideInput() {
        if (::tcgetattr(m_file, &m_before) != 0)
            return false;
        termios quiet = m_before;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        m_isQuiet = ::tcsetattr(m_file, TCSAFLUSH, &quiet) == 0;
        return m_isQuiet;
    }
    void write(const QString &text) const {
        const QByteArray bytes = safeForTerminal(text).toUtf8();
        [[maybe_unused]] const auto written =
            ::write(m_file, bytes.constData(), static_cast<std::size_t>(bytes.size()));
    }

  private:
    int m_file;
    termios m_before{};
    bool m_isQuiet = false;
};

/// One line: the terminal hands out whole lines only.
std::optional<QString> lineFrom(int file) {
    constexpr qsizetype longest = 4096;
    QByteArray bytes(longest, '\0');
    const ssize_t count = ::read(file, bytes.data(), static_cast<std::size_t>(longest));
    std::optional<QString> line;
    if (count > 0) {
        QByteArrayView text(bytes.constData(), count);
        line = QString::fromUtf8(text.endsWith('\n') ? text.chopped(1) : text);
    }
    wipe(bytes);
    return line;
}

} // namespace

bool ControllingTerminal::exists() {
    return OpenTerminal().isOpen();
}

Task<std::optional<QString>> ControllingTerminal::readLine(QString prompt, Echo echo, StopToken stop) {
    OpenTerminal terminal;
    if (!terminal.isOpen() || (echo == Echo::Off && !terminal.hideInput()))
        co_return std::nullopt;
    terminal.write(prompt);
    Completion<bool> isReadable;
    QSocketNotifier notifier(terminal.file(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier,
                     [isReadable]() mutable { isReadable.complete(true); });
    const std::stop_callback onStop(stop, [isReadable]() mutable { isReadable.complete(false); });
    const bool hasLine = co_await isReadable;
    notifier.setEnabled(false);
    std::optional<QString> line = hasLine ? lineFrom(terminal.file()) : std::nullopt;
    if (echo == Echo::Off)
        terminal.write(QStringLiteral("\n"));
    co_return std::optional<QString>(std::move(line));
}

} // namespace larkspur::cli
