#pragma once

#include "core/output/OutputChange.h"

#include <QHash>
#include <QString>

#include <deque>
#include <optional>

namespace larkspur {

/// Reads from an operation's output what is being worked on and how far it is.
class OperationProgress {
  public:
    /// `totalSteps`: number of packages the operation will touch, when known.
    explicit OperationProgress(std::optional<int> totalSteps = std::nullopt)
        : m_totalSteps(totalSteps) {}

    void apply(const OutputChange &change);

    /// The next package of a batch begins; `done` of `total` lie behind. From now on the fraction is the
    /// batch's.
    void beginPackage(const QString &name, int done, int total);

    /// Name of the package being worked on.
    std::optional<QString> currentItem() const { return m_currentItem; }
    /// 0 to 1; nothing while it cannot be told.
    std::optional<double> fraction() const;
    /// Packages begun so far, and how many there will be where that is known.
    int stepCount() const { return m_packages > 0 ? m_packagesDone + 1 : m_steps; }
    std::optional<int> totalSteps() const {
        return m_packages > 0 ? std::optional(m_packages) : m_totalSteps;
    }
    bool hasSeenDownloadPercentage() const { return m_hasSeenPercentage; }

  private:
    struct Download {
        double done = 0;
        double total = 0;
    };
    void readHeader(const QString &line);
    void readPercentage(const QString &line);
    bool readDownload(const QString &line);
    void updateFraction(bool stepped, bool downloaded);

    std::optional<int> m_totalSteps;
    std::optional<QString> m_currentItem;
    std::optional<double> m_fraction; ///< of the package, in a batch
    int m_packagesDone = 0;
    int m_packages = 0; ///< zero: no batch
    int m_steps = 0;
    bool m_hasSeenPercentage = false;
    QHash<QString, Download> m_downloads;
    std::deque<bool>
        m_recentSteps; ///< for the last lines: whether each began a step, so a redraw counts once
};

} // namespace larkspur
