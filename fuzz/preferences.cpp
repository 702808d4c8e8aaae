#include "core/settings/FilePreferenceStore.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

/// No power is cut here, and waiting for the disk would take almost all of the time.
class UnsyncedCalls final : public larkspur::FileCalls {
  public:
    int sync(int) const override { return 0; }
    int syncFolder(const QByteArray &) const override { return 0; }
};

} // namespace

/// The person's choices, of this version and of earlier ones, as somebody or something may have left them: a
/// change keeps what could not be read, and can be read itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    using larkspur::FilePreferenceStore;
    static const QTemporaryDir folder;
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QString current = folder.filePath(QStringLiteral("preferences.json"));
    const QString earlier = folder.filePath(QStringLiteral("preferences.ini"));
    const QString key = QStringLiteral("new");
    for (const QString &path : {current, earlier}) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            std::abort();
        file.close();
        FilePreferenceStore store(folder.path(), std::make_unique<UnsyncedCalls>());
        const bool isRead = store.read().has_value();
        if (store.change({{key, 1}})) {
            const auto again = FilePreferenceStore(folder.path()).read();
            if ((!isRead && store.keptAside().isEmpty()) || !again || again->value(key) != 1)
                std::abort();
        }
        for (const QString &made : {current, earlier, store.keptAside()})
            if (!made.isEmpty())
                QFile::remove(made);
    }
    return 0;
}
