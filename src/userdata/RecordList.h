#pragma once

#include "userdata/JsonListFile.h"

#include <QList>

namespace larkspur {

/// Records in memory and in a JSON file. Several programs may have the file open: every change starts from
/// what the file holds, unless this program could not write its own last change. A file in which one record
/// cannot be read counts as empty, and is kept under another name when it is written for the first time.
template <typename Record>
class RecordList {
  public:
    RecordList(QString path, Logger &logger)
        : m_file(std::move(path), logger) {
        load();
    }

    const QList<Record> &records() const { return m_records; }

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
        if (m_isUnreadable)
            m_file.setAside();
        m_isUnreadable = false;
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
        m_isUnreadable = !list;
        for (const QJsonValue &element : list.value_or(QJsonArray())) {
            auto record = Record::fromJson(element.toObject());
            m_isUnreadable = m_isUnreadable || !record;
            if (record)
                m_records.append(std::move(*record));
        }
        if (m_isUnreadable)
            m_records.clear();
    }

    JsonListFile m_file;
    QList<Record> m_records;
    bool m_isUnreadable = false;
    bool m_isSaved = true;
};

} // namespace larkspur
