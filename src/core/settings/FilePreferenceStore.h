#pragma once

#include "core/files/FileCalls.h"
#include "core/settings/PreferenceStore.h"

#include <memory>
#include <optional>

namespace larkspur {

/// Preferences in a file of their own, which other programs may change too: every change starts from what the
/// file holds then, under a lock file. A full disk leaves the old file as it was.
/// What is damaged is kept as `preferences.json.unreadable` when the file is written for the first time.
class FilePreferenceStore final : public PreferenceStore {
  public:
    /// Keeps `preferences.json` in the folder. Where there is none yet, the values come from the
    /// `preferences.ini` of earlier versions, which stays as it is.
    explicit FilePreferenceStore(const QString &folder, std::unique_ptr<FileCalls> calls = {});

    std::expected<QVariantMap, QString> read() override;
    QString keptAside() const override;
    std::expected<QVariantMap, QString> change(const QVariantMap &values) override;

  private:
    struct Contents {
        QVariantMap values;
        /// What somebody has written into the file that is no list of preferences.
        std::optional<QByteArray> damaged = {};
        bool isDamaged() const { return damaged.has_value(); }
    };
    std::expected<Contents, QString> contents() const;
    QString asidePath() const;

    QString m_path;
    QString m_earlierPath;
    std::unique_ptr<FileCalls> m_calls;
};

} // namespace larkspur
