#include "core/output/OperationProgress.h"
#include "operations/outcome/Verdict.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    larkspur::OperationProgress progress(3);
    progress.apply({0, lines, false});
    progress.apply({static_cast<int>(lines.size() / 2), lines, true});
    if (progress.stepCount() < 0 ||
        (progress.fraction() && (*progress.fraction() < 0 || *progress.fraction() > 1)))
        std::abort();
    (void)larkspur::outcomeOf(lines);
    return 0;
}
