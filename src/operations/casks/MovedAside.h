#pragma once

#include "core/brew/PackageName.h"
#include "operations/casks/CaskSetting.h"
#include "operations/recovery/CrashNote.h"

#include <QStringList>

#include <expected>
#include <memory>
#include <optional>

namespace larkspur {

/// Applications that stand aside, on their own volume and without a copy, while Homebrew reinstalls their
/// cask: a reinstallation removes them first, and one that then fails would leave nothing. A note lets a
/// later operation put them back if the program dies. What is in the way, or no longer needed, goes to the
/// trash; where there is none, everything stays and the person is told where. Blocking.
class MovedAside {
  public:
    /// Of its notes.
    static constexpr QLatin1String noteKind{"moved-aside"};
    /// What the name of an application begins with that stands aside.
    static constexpr QLatin1String namePrefix{".larkspur-aside-"};

    /// Moves aside what belongs to the installed cask: bundles that lie in an application folder and are no
    /// links. The error is one line of text: no note can be written, and nothing was moved.
    static std::expected<std::unique_ptr<MovedAside>, QString> begin(CaskSetting setting,
                                                                     const PackageName &token);
    MovedAside(const MovedAside &) = delete;
    MovedAside &operator=(const MovedAside &) = delete;
    /// Concludes what was not, as failed.
    ~MovedAside();

    /// What stands unprotected where it is, in lines for the output.
    const QStringList &warnings() const { return m_warnings; }

    /// For another attempt, which Homebrew makes only where the places are free: what the one before has left
    /// there half goes to the trash. What is whole stays, Homebrew knows of it. Returns lines for the output.
    QStringList makeRoom() const;

    /// Lines for the output.
    struct Conclusion {
        QStringList lines;
        QStringList errors; ///< not what was reported: each ends the reinstallation as failed
    };
    /// Homebrew has come to an end, and reports success or not: what is whole and new replaces the old, which
    /// goes to the trash, and the others come back. Where that cannot be told both stay.
    Conclusion conclude(bool isReported);

  private:
    struct Application {
        QString place;
        QString aside;
    };
    MovedAside(CaskSetting setting, const PackageName &token);
    enum class Fate {
        Open,    ///< each is judged by what is there
        Replaced ///< all are new
    };
    QJsonObject noteContents(Fate fate) const;
    QStringList discard();
    bool discardOne(const Application &application, QStringList *lines) const;
    bool concludeOne(const Application &application, const std::expected<bool, QString> &isNew,
                     bool isReported, Conclusion *end) const;

    CaskSetting m_setting;
    PackageName m_token;
    QList<Application> m_applications;
    QStringList m_warnings;
    std::optional<CrashNote> m_note;
};

} // namespace larkspur
