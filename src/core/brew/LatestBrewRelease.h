#pragma once

#include "core/async/Task.h"

#include <QString>
#include <QUrl>

#include <optional>

class QNetworkAccessManager;

namespace larkspur {

/// Asks GitHub for the newest Homebrew release.
class LatestBrewRelease {
  public:
    /// `service`: base address of GitHub's REST API.
    explicit LatestBrewRelease(QNetworkAccessManager &network,
                               QUrl service = QUrl(QStringLiteral("https://api.github.com")));

    /// The release's tag, or nothing on any failure and when stopped. Nothing is retried.
    Task<std::optional<QString>> fetch(StopToken stop = {});

  private:
    QNetworkAccessManager &m_network;
    QUrl m_service;
};

/// The tag in the service's answer, or nothing.
std::optional<QString> releaseTag(const QByteArray &answer);

} // namespace larkspur
