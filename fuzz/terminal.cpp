#include "core/output/LineSplitter.h"
#include "core/output/TerminalReader.h"
#include "core/output/Transcript.h"

#include <cstdlib>

// However the bytes are cut, the reader must say the same in the end.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    larkspur::TerminalReader reader;
    larkspur::Transcript transcript;
    larkspur::LineSplitter splitter;
    for (qsizetype i = 0; i < bytes.size(); i += 5) {
        const QByteArrayView piece = bytes.sliced(i, std::min<qsizetype>(5, bytes.size() - i));
        const larkspur::OutputChange change = reader.feed(piece);
        if (change.replaces > transcript.lineCount())
            std::abort(); // more was taken back than was ever there
        transcript.apply(change);
        (void)splitter.feed(piece);
    }
    transcript.apply(reader.finish());
    (void)splitter.finish();
    return 0;
}
