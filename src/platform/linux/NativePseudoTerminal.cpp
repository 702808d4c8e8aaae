#include "platform/linux/NativePseudoTerminal.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace larkspur {

namespace {

class KernelTerminal final : public TerminalConnection {
  public:
    KernelTerminal(int ours, int childs)
        : m_ours(ours)
        , m_childs(childs) {}
    ~KernelTerminal() override {
        childStarted();
        ::close(m_ours);
    }
    KernelTerminal(const KernelTerminal &) = delete;
    KernelTerminal &operator=(const KernelTerminal &) = delete;

    int descriptor() const override { return m_ours; }

    void enterInChild() const override {
        ::ioctl(m_childs, TIOCSCTTY, 0);
        ::dup2(m_childs, STDIN_FILENO);
        ::dup2(m_childs, STDOUT_FILENO);
        ::dup2(m_childs, STDERR_FILENO);
    }

    void childStarted() override {
        if (m_childs >= 0)
            ::close(m_childs);
        m_childs = -1;
    }

  private:
    int m_ours;
    int m_childs;
};

std::unexpected<QString> systemError(const char *what) {
    return std::unexpected(QStringLiteral("%1: %2").arg(QString::fromLatin1(what),
                                                        QString::fromLocal8Bit(std::strerror(errno))));
}

int openChildSide(int ours) {
    char name[128];
    if (::grantpt(ours) != 0 || ::unlockpt(ours) != 0 || ::ptsname_r(ours, name, sizeof name) != 0)
        return -1;
    return ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
}

/// Whoever reads from the terminal meets the end of the input instead of waiting for ever: nobody types here.
void endInput(int ours, int childs) {
    termios settings{};
    if (::tcgetattr(childs, &settings) != 0)
        return;
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(childs, TCSANOW, &settings);
    const char endOfFile = static_cast<char>(settings.c_cc[VEOF]);
    [[maybe_unused]] const auto written = ::write(ours, &endOfFile, 1);
}

} // namespace

std::expected<std::unique_ptr<TerminalConnection>, QString> NativePseudoTerminal::attach(QProcess &) {
    const int ours = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (ours < 0)
        return systemError("no terminal is free");
    const int childs = openChildSide(ours);
    if (childs < 0) {
        auto failure = systemError("the terminal cannot be opened");
        ::close(ours);
        return failure;
    }
    winsize size{};
    size.ws_col = columns;
    size.ws_row = rows;
    ::ioctl(ours, TIOCSWINSZ, &size);
    endInput(ours, childs);
    return std::make_unique<KernelTerminal>(ours, childs);
}

} // namespace larkspur
