#pragma once

#include "core/async/Task.h"

#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

class QNetworkAccessManager;

namespace larkspur {

/// Asks GitHub for the newest Homebrew release.
class LatestBrewRelease {
  public:
    /// How long the whole answer may take, and how long it may be: it is a few kilobytes.
    static constexpr std::chrono::milliseconds defaultDeadline{30'000};
    static constexpr qint64 longestAnswer = 1024 * 1024;

    /// `service`: base address of GitHub's REST API.
    explicit LatestBrewRelease(QNetworkAccessManager &network,
                               QUrl service = QUrl(QStringLiteral("https://api.github.com")),
                               std::chrono::milliseconds deadline = defaultDeadline);

    /// The release's tag, or nothing on any failure and when stopped. Nothing is retried.
    Task<std::optional<QString>> fetch(StopToken stop = {});

  private:
    QNetworkAccessManager &m_network;
    QUrl m_service;
    std::chrono::milliseconds m_deadline;
};

/// The tag in the service's answer, or nothing.
std::optional<QString> releaseTag(const QByteArray &answer);

} // namespace larkspur
