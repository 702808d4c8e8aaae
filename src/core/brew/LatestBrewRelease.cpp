#include "core/brew/LatestBrewRelease.h"

#include "core/async/Completion.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

namespace larkspur {

using namespace std::chrono_literals;

LatestBrewRelease::LatestBrewRelease(QNetworkAccessManager &network, QUrl service,
                                     std::chrono::milliseconds deadline)
    : m_network(network)
    , m_service(std::move(service))
    , m_deadline(deadline) {}

Task<std::optional<QString>> LatestBrewRelease::fetch(StopToken stop) {
    QUrl address = m_service;
    address.setPath(QStringLiteral("/repos/Homebrew/brew/releases/latest"));
    QNetworkRequest request(address);
    request.setRawHeader("Accept", "application/vnd.github+json");
    request.setTransferTimeout(std::chrono::milliseconds(15s).count());
    QNetworkReply *reply = m_network.get(request);
    Completion<std::optional<QString>> answer;
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, answer]() mutable {
        const bool succeeded = reply->error() == QNetworkReply::NoError;
        answer.complete(succeeded ? releaseTag(reply->readAll()) : std::nullopt);
        reply->deleteLater();
    });
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply] {
        if (reply->bytesAvailable() > longestAnswer)
            reply->abort();
    });
    QTimer::singleShot(m_deadline, reply, &QNetworkReply::abort); // a byte now and then is no progress
    const std::stop_callback onStop(stop, [reply] { reply->abort(); });
    co_return co_await answer;
}

std::optional<QString> releaseTag(const QByteArray &answer) {
    const QJsonValue tag = QJsonDocument::fromJson(answer).object().value(QLatin1String("tag_name"));
    return tag.isString() && !tag.toString().isEmpty() ? std::optional(tag.toString()) : std::nullopt;
}

} // namespace larkspur
