#include "platform/macos/KernelProcessTable.h"

#include <algorithm>
#include <array>
#include <libproc.h>
#include <sys/proc.h>
#include <sys/proc_info.h>
#include <sys/sysctl.h>
#include <unistd.h>
#include <vector>

namespace larkspur {

namespace {

/// What tells an open file or pipe apart from others; the two ends of a pipe share it.
struct OpenThing {
    quint32 type = 0; ///< PROX_FDTYPE_…
    quint64 volume = 0;
    quint64 number = 0; ///< file number, or the smaller handle of a pipe's two ends
    bool operator==(const OpenThing &) const = default;
};

std::optional<OpenThing> openThing(pid_t process, const proc_fdinfo &entry) {
    if (entry.proc_fdtype == PROX_FDTYPE_PIPE) {
        pipe_fdinfo info{};
        if (::proc_pidfdinfo(process, entry.proc_fd, PROC_PIDFDPIPEINFO, &info, sizeof info) !=
            static_cast<int>(sizeof info))
            return std::nullopt;
        return OpenThing{entry.proc_fdtype, 0,
                         std::min(info.pipeinfo.pipe_handle, info.pipeinfo.pipe_peerhandle)};
    }
    if (entry.proc_fdtype != PROX_FDTYPE_VNODE)
        return std::nullopt;
    vnode_fdinfo info{};
    if (::proc_pidfdinfo(process, entry.proc_fd, PROC_PIDFDVNODEINFO, &info, sizeof info) !=
        static_cast<int>(sizeof info))
        return std::nullopt;
    return OpenThing{entry.proc_fdtype, info.pvi.vi_stat.vst_dev, info.pvi.vi_stat.vst_ino};
}

/// Nothing for a process that has ended or is another user's.
std::vector<proc_fdinfo> openFiles(pid_t process) {
    const int size = ::proc_pidinfo(process, PROC_PIDLISTFDS, 0, nullptr, 0);
    if (size <= 0)
        return {};
    std::vector<proc_fdinfo> entries(static_cast<std::size_t>(size) / sizeof(proc_fdinfo));
    const int filled = ::proc_pidinfo(process, PROC_PIDLISTFDS, 0, entries.data(),
                                      static_cast<int>(entries.size() * sizeof(proc_fdinfo)));
    entries.resize(static_cast<std::size_t>(std::max(filled, 0)) / sizeof(proc_fdinfo));
    return entries;
}

bool hasOpen(pid_t process, const OpenThing &thing) {
    return std::ranges::any_of(openFiles(process), [&](const proc_fdinfo &entry) {
        return entry.proc_fdtype == thing.type && openThing(process, entry) == thing;
    });
}

} // namespace

std::optional<GroupMembers> KernelProcessTable::membersOf(qint64 group) const {
    int question[] = {CTL_KERN, KERN_PROC, KERN_PROC_PGRP, static_cast<int>(group)};
    constexpr unsigned words = 4;
    std::size_t size = 0;
    if (::sysctl(question, words, nullptr, &size, nullptr, 0) != 0)
        return std::nullopt;
    std::vector<kinfo_proc> entries(size / sizeof(kinfo_proc) + 8); // there may be new ones by now
    size = entries.size() * sizeof(kinfo_proc);
    if (::sysctl(question, words, entries.data(), &size, nullptr, 0) != 0)
        return std::nullopt;
    entries.resize(size / sizeof(kinfo_proc));
    GroupMembers members;
    for (const kinfo_proc &entry : entries)
        if (entry.kp_proc.p_stat == SZOMB)
            members.hasEnded = true;
        else
            members.running.append(entry.kp_proc.p_pid);
    return members;
}

QList<qint64> KernelProcessTable::holdersOf(int descriptor) const {
    const std::vector<proc_fdinfo> own = openFiles(::getpid());
    const auto entry = std::ranges::find(own, descriptor, &proc_fdinfo::proc_fd);
    const auto thing = entry == own.end() ? std::nullopt : openThing(::getpid(), *entry);
    const int size = ::proc_listallpids(nullptr, 0);
    if (!thing || size <= 0)
        return {};
    std::vector<pid_t> processes(static_cast<std::size_t>(size) + 8); // there may be new ones by now
    const int count =
        ::proc_listallpids(processes.data(), static_cast<int>(processes.size() * sizeof(pid_t)));
    processes.resize(static_cast<std::size_t>(std::max(count, 0)));
    QList<qint64> holders;
    for (const pid_t process : processes)
        if (process != ::getpid() && hasOpen(process, *thing))
            holders.append(process);
    return holders;
}

QString KernelProcessTable::nameOf(qint64 process) const {
    std::array<char, 2 * MAXCOMLEN + 1> name{};
    const int length = ::proc_name(static_cast<int>(process), name.data(), name.size());
    return QString::fromUtf8(name.data(), std::max(length, 0));
}

} // namespace larkspur
