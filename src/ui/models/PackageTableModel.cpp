#include "ui/models/PackageTableModel.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>

namespace larkspur::ui {

namespace {

/// Names as people sort them: item9 before item10, case aside. The C locale knows no such order and gets
/// English.
QCollator nameCollator() {
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

} // namespace

QString sizeText(qint64 bytes) {
    return bytes < 0 ? QString() : QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

void PackageTableModel::setRows(QList<PackageRow> rows) {
    m_all = std::move(rows);
    rebuild();
}

void PackageTableModel::setFilter(const QString &text) {
    if (text == m_filter)
        return;
    m_filter = text;
    rebuild();
}

void PackageTableModel::setOrder(PackageSortOrder order) {
    static constexpr Column columns[] = {NameColumn, DateColumn, SizeColumn};
    m_order = order;
    // Names from A; the newest and the largest first.
    sort(columns[static_cast<int>(order)],
         order == PackageSortOrder::Name ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void PackageTableModel::sort(int column, Qt::SortOrder order) {
    m_sortColumn = column;
    m_direction = order;
    rebuild();
}

void PackageTableModel::rebuild() {
    beginResetModel();
    m_shown.clear();
    m_largestSize = 0;
    for (const PackageRow &row : std::as_const(m_all)) {
        m_largestSize = std::max(m_largestSize, row.bytes);
        if (row.matches(m_filter))
            m_shown.append(row);
    }
    if (m_sortColumn >= 0)
        sortShown();
    endResetModel();
}

void PackageTableModel::sortShown() {
    const QCollator collator = nameCollator();
    const auto isLess = [&](const PackageRow &left, const PackageRow &right) {
        if (m_sortColumn == SizeColumn && left.bytes != right.bytes)
            return left.bytes < right.bytes;
        if (m_sortColumn == DateColumn && left.installedOn != right.installedOn)
            return left.installedOn < right.installedOn;
        if (m_sortColumn == VersionColumn && left.version != right.version)
            return collator.compare(left.version, right.version) < 0;
        const int byTitle = collator.compare(left.title, right.title);
        return byTitle != 0 ? byTitle < 0 : left.id.isCask < right.id.isCask;
    };
    std::ranges::sort(m_shown, [&](const PackageRow &left, const PackageRow &right) {
        return m_direction == Qt::AscendingOrder ? isLess(left, right) : isLess(right, left);
    });
}

int PackageTableModel::indexOf(const PackageId &id) const {
    const auto found = std::ranges::find(m_shown, id, &PackageRow::id);
    return found == m_shown.end() ? -1 : static_cast<int>(found - m_shown.begin());
}

int PackageTableModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int PackageTableModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PackageTableModel::data(const QModelIndex &index, int role) const {
    const PackageRow &row = m_shown[index.row()];
    if (role == Qt::ToolTipRole && index.column() == NameColumn)
        return row.description;
    if (role == Qt::TextAlignmentRole && index.column() == SizeColumn)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::AccessibleTextRole && index.column() == NameColumn)
        return QStringLiteral("%1, %2").arg(row.title, row.id.isCask ? tr("cask") : tr("formula"));
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case NameColumn:
        return row.title;
    case VersionColumn:
        return row.newVersion.isEmpty() ? row.version : row.version + QStringLiteral(" → ") + row.newVersion;
    case SizeColumn:
        return sizeText(row.bytes);
    case DateColumn:
        return QLocale().toString(row.installedOn.toLocalTime().date(), QLocale::ShortFormat);
    default:
        return {};
    }
}

QVariant PackageTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    static const QStringList titles{tr("Name"), tr("Version"), tr("Size"), tr("Installed")};
    if (orientation == Qt::Vertical || role != Qt::DisplayRole)
        return {};
    return titles.value(section);
}

} // namespace larkspur::ui
