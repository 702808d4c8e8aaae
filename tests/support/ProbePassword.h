#pragma once

#include "core/authorization/Password.h"

#include <QString>

#include <functional>

namespace larkspur::test {

/// A password made up by another process. This one keeps only a disguise of it, so that whatever else it
/// finds of it in its own memory was left there by the program.
class ProbePassword {
  public:
    static constexpr qsizetype length = 24;

    ProbePassword();

    /// The one copy that a test hands to the program; it wipes itself.
    Password password() const;
    /// One character after the other, for typing.
    void spell(const std::function<void(QChar)> &type) const;
    /// Letters in the disguise, as `tr a-z n-za-m` in a shell makes them of the password.
    const QByteArray &disguise() const { return m_disguise; }

    /// A line for each place in this process' memory, freed memory included, where its first letters stand,
    /// one after the other or in the steps of a text field's undo list. Empty where the system has no such
    /// view.
    QString copiesInMemory(qsizetype letters = length) const;
    static bool canLook();

    /// A line for each file below the folder that holds it.
    QString filesWith(const QString &folder) const;

  private:
    QByteArray m_disguise;
};

} // namespace larkspur::test
