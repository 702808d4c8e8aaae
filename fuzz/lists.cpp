#include "core/process/ChildEnvironment.h"
#include "inventory/decoding/ListDecoders.h"
#include "inventory/refresh/PackageSizes.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    (void)larkspur::decodeOutdated(bytes);
    (void)larkspur::decodeServices(bytes);
    (void)larkspur::decodeTaps(bytes);
    (void)larkspur::decodeTrust(bytes);
    (void)larkspur::sizesFromDu(QString::fromUtf8(bytes));
    (void)larkspur::homebrewVariables(QString::fromUtf8(bytes));
    return 0;
}
