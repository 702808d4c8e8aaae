#pragma once

#include <QObject>
#include <QSettings>
#include <QStringList>

#include <memory>

namespace larkspur {

/// The person's choices: key-value pairs kept by the system's own preference store. Missing or unusable
/// values read as the default that the reader names.
class Preferences : public QObject {
    Q_OBJECT
  public:
    explicit Preferences(std::unique_ptr<QSettings> store, QObject *parent = nullptr);

    bool boolean(const QString &key, bool fallback = false) const;
    QString string(const QString &key, const QString &fallback = {}) const;
    QStringList strings(const QString &key) const;
    qint64 integer(const QString &key, qint64 fallback) const;
    QByteArray bytes(const QString &key) const;

    /// Stores a value and tells who listens, unless nothing changed.
    void set(const QString &key, const QVariant &value);

  Q_SIGNALS:
    void changed(const QString &key);

  private:
    std::unique_ptr<QSettings> m_store;
};

/// The keys of the preferences.
namespace keys {
inline const QString brewPathOverride = QStringLiteral("brewPathOverride");
inline const QString customCaskAppdir = QStringLiteral("customCaskAppdir");
inline const QString dismissedUntrustedTaps = QStringLiteral("dismissedUntrustedTaps");
inline const QString includeAutoUpdateCasks = QStringLiteral("includeAutoUpdateCasks");
inline const QString kegPreservationCapBytes = QStringLiteral("kegPreservationCapBytes");
inline const QString kegPreservationEnabled = QStringLiteral("kegPreservationEnabled");
inline const QString kegPreservationLocation = QStringLiteral("kegPreservationLocation");
inline const QString knownRootServices = QStringLiteral("knownRootServices");
inline const QString lastKnownHomebrewVersion = QStringLiteral("lastKnownHomebrewVersion");
inline const QString packageSortOrder = QStringLiteral("packageSortOrder");
inline const QString refreshOnActivate = QStringLiteral("refreshOnActivate");
inline const QString simpleMode = QStringLiteral("simpleMode");
inline const QString showOperationPlan = QStringLiteral("showOperationPlan");
inline const QString snapshotRetentionLimit = QStringLiteral("snapshotRetentionLimit");
inline const QString touchIDSudoAuth = QStringLiteral("touchIDSudoAuth");
inline const QString useReinstallForCasks = QStringLiteral("useReinstallForCasks");
inline const QString windowGeometry = QStringLiteral("windowGeometry");
inline const QString windowLayout = QStringLiteral("windowLayout");
} // namespace keys

} // namespace larkspur
