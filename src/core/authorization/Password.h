#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

namespace larkspur {

/// A password in memory. Copies share one buffer, which is overwritten when the last of them goes. It has no
/// way into a log line or a message: what needs the characters asks for them by name.
class Password {
  public:
    /// Takes the characters over; the given text is overwritten.
    explicit Password(QString &&typed);
    explicit Password(QByteArray &&utf8);

    const QByteArray &utf8() const;
    bool isEmpty() const { return utf8().isEmpty(); }

  private:
    struct Buffer;
    std::shared_ptr<Buffer> m_buffer;
};

/// Overwrites the characters in place, also for whoever shares them.
void wipe(QString &text);
void wipe(QByteArray &bytes);

} // namespace larkspur
