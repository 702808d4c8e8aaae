#pragma once

#include "userdata/JsonListFile.h"

#include <QList>

#include <utility>

namespace larkspur {

/// Records in memory and in a JSON file. Several programs may have the file open: every change starts from
/// what the file holds, unless this program could not write its own last change. Records that cannot be read
/// are left out, which is told, and the file is kept under another name when it is written for the first
/// time.
template <typename Record>
class RecordList {
  public:
    RecordList(QString path, Logger &logger)
        : m_file(std::move(path), logger) {
        load();
    }

    const QList<Record> &records() const { return m_records; }

    /// That the list is or was not whole, and where what is missing may be found: a sentence for the person,
    /// empty if nothing is known to be missing.
    QString damage() const {
        if (!m_damage.isEmpty())
            return QStringLiteral("%1. The file is kept as it is at the next change.").arg(m_damage);
        const QString aside = m_file.keptAside();
        return aside.isEmpty() ? QString()
                               : QStringLiteral("Entries could not be read and are kept in %1. Remove that "
                                                "file when the list is right again.")
                                     .arg(aside);
    }

    /// Takes over what the file holds; true if that differs from what is in memory.
    bool reload() {
        const QList<Record> before = m_records;
        if (m_isSaved)
            load();
        return m_records != before;
    }

    /// Calls `edit` with the list and writes the file. False if the change is in memory only.
    template <typename Edit>
    bool change(Edit edit) {
        reload();
        edit(m_records);
        if (!m_damage.isEmpty() && !m_file.setAside())
            return m_isSaved = false;
        m_damage.clear();
        QJsonArray list;
        for (const Record &record : m_records)
            list.append(record.toJson());
        m_isSaved = m_file.write(list);
        return m_isSaved;
    }

  private:
    void load() {
        m_records.clear();
        const auto list = m_file.read();
        const QString before = std::exchange(m_damage, list ? QString() : list.error());
        int unreadable = 0;
        for (const QJsonValue &element : list.value_or(QJsonArray())) {
            auto record = Record::fromJson(element.toObject());
            if (record)
                m_records.append(std::move(*record));
            else
                ++unreadable;
        }
        if (unreadable > 0)
            m_damage = QStringLiteral("%1 of the entries in %2 cannot be read")
                           .arg(QString::number(unreadable), m_file.path());
        if (!m_damage.isEmpty() && m_damage != before)
            m_file.warn(m_damage);
    }

    JsonListFile m_file;
    QList<Record> m_records;
    QString m_damage; ///< why the file is not understood as a whole; empty if it is
    bool m_isSaved = true;
};

} // namespace larkspur
