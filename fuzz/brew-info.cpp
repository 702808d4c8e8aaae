#include "inventory/decoding/BrewInfoDecoder.h"
#include "inventory/decoding/Conversion.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    if (const auto response = larkspur::decodeBrewInfo(bytes)) {
        for (const auto &formula : response->formulae.elements)
            (void)larkspur::toFormula(formula);
        for (const auto &cask : response->casks.elements)
            (void)larkspur::toCask(cask);
    }
    (void)larkspur::decodeCaskCatalogue(bytes);
    return 0;
}
