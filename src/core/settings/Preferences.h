#pragma once

#include "core/settings/PreferenceStore.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>

namespace larkspur {

/// The person's choices: key-value pairs in memory and in a store, from which they come back at the next
/// start. Missing or unusable values read as the default that the reader names.
class Preferences : public QObject {
    Q_OBJECT
  public:
    explicit Preferences(std::unique_ptr<PreferenceStore> store, QObject *parent = nullptr);

    bool boolean(const QString &key, bool fallback = false) const;
    QString string(const QString &key, const QString &fallback = {}) const;
    QStringList strings(const QString &key) const;
    qint64 integer(const QString &key, qint64 fallback) const;
    /// The same for a limit by which something is removed for good: nothing where it cannot be told what the
    /// person has chosen, because preferences could not be read or this one is no number.
    std::optional<qint64> knownInteger(const QString &key, qint64 fallback) const;
    QByteArray bytes(const QString &key) const;

    /// Takes a choice of the person and tells who listens, unless nothing changed. One that cannot be stored
    /// holds until the program ends, is told (`choiceNotSaved`), and is stored with the next that can be.
    void set(const QString &key, const QVariant &value);
    /// The same for what the program notes on its own, such as the size of its window: nobody is disturbed
    /// where that fails.
    void remember(const QString &key, const QVariant &value);
    /// Takes over what another program has stored since.
    void reload();

    /// Why the store could not be read, so that defaults hold; one line of text, empty if it could.
    const QString &readFailure() const { return m_readFailure; }
    /// The same, or that what could not be read is kept aside: a sentence for the person, empty if nothing
    /// is lost.
    QString damage() const;

  Q_SIGNALS:
    void changed(const QString &key);
    /// A value holds until the program ends only; `reason` is one line of text.
    void notSaved(const QString &reason);
    /// The same, where the person has chosen it.
    void choiceNotSaved(const QString &reason);

  private:
    std::expected<void, QString> store(const QString &key, const QVariant &value);
    void adopt(const QVariantMap &stored);

    std::unique_ptr<PreferenceStore> m_store;
    QVariantMap m_values;
    QVariantMap m_unsaved; ///< of those, what the store did not take
    QString m_readFailure;
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
