#include "ui/timemachine/CompareSheet.h"

#include "ui/timemachine/DiffView.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

namespace larkspur::ui {

CompareSheet::CompareSheet(QList<Snapshot> snapshots, QWidget *parent)
    : QDialog(parent)
    , m_snapshots(std::move(snapshots))
    , m_first(new QComboBox)
    , m_second(new QComboBox)
    , m_differences(new DiffView) {
    setWindowTitle(tr("Compare"));
    resize(560, 500);
    auto *row = new QHBoxLayout;
    for (QComboBox *box : {m_first, m_second}) {
        box->addItem(tr("Choose…"));
        for (const Snapshot &snapshot : m_snapshots)
            box->addItem(QLocale().toString(snapshot.date.toLocalTime(), QLocale::ShortFormat) +
                         (snapshot.note ? QStringLiteral(" · ") + *snapshot.note : QString()));
        box->setAccessibleName(box == m_first ? tr("One restore point") : tr("The other restore point"));
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        row->addWidget(box, 1);
        connect(box, &QComboBox::currentIndexChanged, this, &CompareSheet::update);
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 14);
    layout->setSpacing(12);
    layout->addLayout(row);
    layout->addWidget(m_differences, 1);
    layout->addWidget(buttons);
    update();
}

void CompareSheet::choose(int first, int second) {
    m_first->setCurrentIndex(first + 1);
    m_second->setCurrentIndex(second + 1);
}

void CompareSheet::update() {
    const int first = m_first->currentIndex() - 1;
    const int second = m_second->currentIndex() - 1;
    if (first < 0 || second < 0) {
        m_differences->showText(tr("Select two snapshots to compare."));
        return;
    }
    if (first == second) {
        m_differences->showText(tr("Pick two different snapshots to compare."));
        return;
    }
    const SnapshotDiff diff =
        compareSnapshots(m_snapshots[std::max(first, second)], m_snapshots[std::min(first, second)]);
    if (diff.isEmpty())
        m_differences->showText(tr("These two snapshots have the same packages."));
    else
        m_differences->showDiff(diff, tr("Only in the older one"), tr("Only in the newer one"));
}

} // namespace larkspur::ui
