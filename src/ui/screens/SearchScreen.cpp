#include "ui/screens/SearchScreen.h"

#include "core/async/TaskScope.h"
#include "core/errors/AppError.h"
#include "inventory/state/InventoryState.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/PackageTable.h"
#include "ui/widgets/ScreenHeader.h"

#include <QPointer>
#include <QSet>

#include <algorithm>

namespace larkspur::ui {

namespace {

constexpr int pauseBeforeAsking = 350; // milliseconds without a key
constexpr qsizetype shortestQuestion = 2;

/// How well a row answers the question: 0 is best.
int rank(const PackageRow &row, const QString &text) {
    if (row.id.name.compare(text, Qt::CaseInsensitive) == 0 ||
        row.title.compare(text, Qt::CaseInsensitive) == 0)
        return 0;
    if (row.id.name.startsWith(text, Qt::CaseInsensitive) || row.title.startsWith(text, Qt::CaseInsensitive))
        return 1;
    if (row.id.name.contains(text, Qt::CaseInsensitive) || row.title.contains(text, Qt::CaseInsensitive))
        return 2;
    return 3; // in the description only
}

/// Installed packages and Homebrew's hits, names that fit best first.
QList<PackageRow> searchRows(QList<PackageRow> rows, const SearchHits &hits, const QString &text) {
    QSet<PackageId> installed;
    for (const PackageRow &row : std::as_const(rows))
        installed.insert(row.id);
    rows.removeIf([&text](const PackageRow &row) { return !row.matches(text); });
    const auto add = [&](const QStringList &names, bool isCask) {
        for (const QString &name : names)
            if (PackageRow row = availableRow(name, isCask);
                row.id.name.contains(text, Qt::CaseInsensitive) && !installed.contains(row.id))
                rows.append(std::move(row));
    };
    add(hits.formulae, false);
    add(hits.casks, true);
    std::ranges::sort(rows, [&text](const PackageRow &left, const PackageRow &right) {
        const int leftRank = rank(left, text);
        const int rightRank = rank(right, text);
        if (leftRank != rightRank)
            return leftRank < rightRank;
        return left.title != right.title ? left.title < right.title : left.id.isCask < right.id.isCask;
    });
    return rows;
}

Task<> ask(InventoryQueries *queries, QString text, StopToken stop, QPointer<QObject> asker,
           std::function<void(Result<SearchHits>)> answer) {
    auto hits = co_await queries->search(text, stop);
    if (asker && !stop.stop_requested())
        answer(std::move(hits));
}

} // namespace

SearchScreen::SearchScreen(Services services)
    : PackageScreen(tr("Search"), tr("Search installed and available packages"), services.inventory,
                    services.queries, services.actions)
    , m_services(services) {
    table()->model().setMarksInstalled(true);
    table()->model().setMarksUpdates(false); // the version column shows them
    table()->model().keepGivenOrder();
    m_pause.setSingleShot(true);
    m_pause.setInterval(pauseBeforeAsking);
    connect(&m_pause, &QTimer::timeout, this, &SearchScreen::askHomebrew);
    connect(filterField(), &QLineEdit::textChanged, this, &SearchScreen::onTyped);
    connect(filterField(), &QLineEdit::returnPressed, this, &SearchScreen::askHomebrew);
}

SearchScreen::~SearchScreen() {
    m_stop.request_stop();
}

void SearchScreen::onTyped() {
    m_stop.request_stop(); // an answer to the earlier text is no longer wanted
    m_isAsking = false;
    m_problem.clear();
    m_pause.start();
    reload();
}

void SearchScreen::askHomebrew() {
    m_pause.stop();
    const QString text = filterField()->text().trimmed();
    if (text.size() < shortestQuestion || text == m_answeredText)
        return;
    m_stop.request_stop();
    m_stop = StopSource();
    m_isAsking = true;
    m_services.actions.tasks.spawn(
        QStringLiteral("The search for ") + text,
        ask(&m_services.queries, text, m_stop.get_token(), this,
            [this, text](const Result<SearchHits> &answer) { onAnswer(text, answer); }));
    reload();
}

void SearchScreen::onAnswer(const QString &text, const Result<SearchHits> &answer) {
    m_isAsking = false;
    if (answer) {
        m_hits = *answer;
        m_answeredText = text;
    } else {
        m_problem = AppError::from(answer.error()).message();
    }
    reload();
}

void SearchScreen::reload() {
    const QString text = filterField()->text().trimmed();
    QList<PackageRow> rows;
    if (!text.isEmpty())
        rows = searchRows(PackageScreen::rows(PackageSelection::Everything), m_hits, text);
    table()->setRows(std::move(rows));
    const auto count = table()->model().totalRows();
    QString line = text.isEmpty() ? tr("Installed and available packages") : tr("%1 found").arg(count);
    if (m_isAsking)
        line += tr(" · asking Homebrew…");
    if (!m_problem.isEmpty())
        line = m_problem.section(QLatin1Char('\n'), 0, 0);
    header()->setSubtitle(line);
    if (text.isEmpty())
        table()->emptyState()->show(
            QStringLiteral("search"), tr("Find a Package"),
            tr("Type a name. Installed packages appear at once, available ones a moment later."));
    else
        table()->emptyState()->show(QStringLiteral("search"),
                                    m_isAsking ? tr("Searching…") : tr("Nothing Found"),
                                    tr("Neither installed nor available under “%1”.").arg(text));
}

} // namespace larkspur::ui
