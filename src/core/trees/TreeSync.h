#pragma once

#include <QString>

#include <expected>

namespace larkspur {

/// Port: brings a folder and all in it to the disk, its own name in its parent included, before a later step
/// relies on it: after a power cut it is there, whole. Blocking.
class TreeSync {
  public:
    virtual ~TreeSync() = default;

    /// The error is one line of text.
    virtual std::expected<void, QString> sync(const QString &folder) = 0;
};

/// File by file, on any system.
class FileByFileSync final : public TreeSync {
  public:
    std::expected<void, QString> sync(const QString &folder) override;
};

} // namespace larkspur
