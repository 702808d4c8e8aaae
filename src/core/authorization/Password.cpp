#include "core/authorization/Password.h"

namespace larkspur {

namespace {

void overwrite(void *memory, std::size_t size) {
    // Volatile, or the compiler would drop writes to memory that is about to be freed.
    auto *byte = static_cast<volatile unsigned char *>(memory);
    while (size-- > 0)
        *byte++ = 0;
}

} // namespace

struct Password::Buffer {
    QByteArray bytes;
    explicit Buffer(QByteArray taken)
        : bytes(std::move(taken)) {}
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
    ~Buffer() { wipe(bytes); }
};

Password::Password(QString &&typed)
    : m_buffer(std::make_shared<Buffer>(typed.toUtf8())) {
    wipe(typed);
}

Password::Password(QByteArray &&utf8)
    : m_buffer(std::make_shared<Buffer>(std::move(utf8))) {}

const QByteArray &Password::utf8() const {
    return m_buffer->bytes;
}

// The data is reached through the const pointer on purpose: the other one would first make a copy of shared
// characters, and the copy would be wiped instead of them. Literals live in memory that cannot be written.
void wipe(QString &text) {
    if (text.data_ptr().isMutable())
        overwrite(const_cast<QChar *>(text.constData()),
                  static_cast<std::size_t>(text.size()) * sizeof(QChar));
    text = QString();
}

void wipe(QByteArray &bytes) {
    if (bytes.data_ptr().isMutable())
        overwrite(const_cast<char *>(bytes.constData()), static_cast<std::size_t>(bytes.size()));
    bytes = QByteArray();
}

} // namespace larkspur
