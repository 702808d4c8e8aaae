#include "operations/kegs/KegCopy.h"

#include "core/brew/PackageName.h"
#include "core/files/WholeFile.h"
#include "core/trees/LinkCheck.h"
#include "operations/kegs/KegReceipt.h"

#include <QFileInfo>

namespace larkspur {

namespace {

std::expected<TreeScan, QString> readManifest(const QString &path) {
    constexpr qint64 largest = 256 * 1024 * 1024; // bytes; far beyond what a large keg needs
    const auto text = readWholeFile(path, largest);
    return text ? TreeScan::fromText(*text) : std::unexpected(text.error().reason);
}

} // namespace

std::optional<KegEntry> entryOfCopy(const KegPlaces &places, const KegPlaces::Copy &copy) {
    const QString manifest = places.manifest(copy.formula, copy.version);
    const QString folder = places.copy(copy.formula, copy.version);
    const auto wanted = readManifest(manifest);
    const auto there = TreeScan::of(folder, TreeScan::Depth::Names);
    const auto name = PackageName::parse(copy.formula);
    const bool isNamed = name && !name->isQualified() && isPlainVersion(copy.version);
    if (!isNamed || !wanted || !there || !there->matches(*wanted))
        return std::nullopt;
    return KegEntry{.formula = copy.formula,
                    .version = copy.version,
                    .bytes = there->bytesOnDisk,
                    .date = QFileInfo(manifest).lastModified(),
                    .snapshotID = std::nullopt,
                    .fullName = qualifiedName(folder, *name)};
}

std::expected<void, QString> checkCopy(const KegPlaces &places, const KegPlaces::Copy &copy) {
    return checkFiles(places.copy(copy.formula, copy.version), places.manifest(copy.formula, copy.version));
}

std::expected<void, QString> checkFiles(const QString &folder, const QString &manifest) {
    const auto wanted = readManifest(manifest);
    if (!wanted)
        return std::unexpected(QStringLiteral("the list of its files cannot be read: ") + wanted.error());
    const auto there = TreeScan::of(folder, TreeScan::Depth::Contents);
    if (!there)
        return std::unexpected(there.error());
    if (!there->matches(*wanted))
        return std::unexpected(QStringLiteral("it is damaged"));
    return {};
}

qint64 bytesOfCopy(const KegPlaces &places, const KegPlaces::Copy &copy) {
    const QString folder = places.copy(copy.formula, copy.version);
    if (!withoutLinks(places.folder(), folder))
        return 0;
    const auto there = TreeScan::of(folder, TreeScan::Depth::Names);
    return there ? there->bytesOnDisk : 0;
}

} // namespace larkspur
