#include "operations/oclp/CopyXattrsStub.h"

#include "core/files/AtomicFile.h"
#include "core/log/Logger.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace larkspur {

namespace {

QString scriptIn(const QString &prefix) {
    return prefix + QStringLiteral("/Library/Homebrew/cask/utils/copy-xattrs.swift");
}

QString backupOf(const QString &script) {
    return script + QStringLiteral(".larkspur-backup");
}

/// In one step, over whatever stands there: Homebrew finds the script at every moment.
bool restore(const QString &script) {
    return std::rename(QFile::encodeName(backupOf(script)).constData(),
                       QFile::encodeName(script).constData()) == 0;
}

} // namespace

CopyXattrsStub::CopyXattrsStub(const QString &prefix, Logger &logger)
    : m_logger(logger) {
    const QString script = scriptIn(prefix);
    if (!QFileInfo::exists(script)) {
        logger.info(QStringLiteral("[Larkspur] OCLP mode: this Homebrew has no copy-xattrs script"));
        return;
    }
    if (!QFile::rename(script, backupOf(script))) {
        logger.warn(QStringLiteral("[Larkspur] OCLP mode: %1 cannot be moved aside").arg(script));
        return;
    }
    m_script = script;
    if (const auto written = writeFileAtomically(script, "import Foundation\nexit(0)\n"); !written)
        logger.warn(QStringLiteral("[Larkspur] OCLP mode: ") + written.error());
    else
        logger.info(QStringLiteral(
            "[Larkspur] OCLP mode: temporarily disabled copy-xattrs to avoid listxattr errors"));
}

CopyXattrsStub::~CopyXattrsStub() {
    if (!m_script.isEmpty() && !restore(m_script))
        m_logger.error(QStringLiteral("[Larkspur] OCLP mode: %1 could not be put back").arg(m_script));
}

bool CopyXattrsLeftover::exists(const QString &prefix) const {
    return !prefix.isEmpty() && QFileInfo::exists(backupOf(scriptIn(prefix)));
}

Task<> CopyXattrsLeftover::putRight(LockedWork work) {
    if (restore(scriptIn(work.prefix)))
        work.say(QStringLiteral("Put Homebrew's copy-xattrs back after an interrupted update."));
    else
        work.warn(QStringLiteral("%1 could not be put back.").arg(scriptIn(work.prefix)));
    co_return;
}

} // namespace larkspur
