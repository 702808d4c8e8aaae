#include "ui/screens/SearchScreen.h"

#include "core/async/TaskScope.h"
#include "core/errors/AppError.h"
#include "inventory/state/InventoryState.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/PackageTable.h"
#include "ui/widgets/ScreenHeader.h"

#include <QPointer>

namespace larkspur::ui {

namespace {

constexpr int pauseBeforeAsking = 350; // milliseconds without a key
constexpr qsizetype shortestQuestion = 2;

Task<> ask(InventoryQueries *queries, QString text, StopToken stop, QPointer<QObject> asker,
           std::function<void(Result<SearchHits>)> answer) {
    auto hits = co_await queries->search(text, stop);
    if (asker && !stop.stop_requested())
        answer(std::move(hits));
}

} // namespace

SearchScreen::SearchScreen(Services services)
    : PackageScreen(tr("Search"), tr("Search installed and available packages"), services.inventory, services.queries,
                    services.operations, services.tasks)
    , m_services(services) {
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
    m_services.tasks.spawn(QStringLiteral("The search for ") + text,
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
    if (!text.isEmpty()) {
        rows = packageRows(inventory().value(), PackageSelection::Everything);
        rows.removeIf([&text](const PackageRow &row) { return !row.matches(text); });
        const auto add = [&](const QStringList &names, bool isCask) {
            for (const QString &name : names)
                if (PackageRow row = availableRow(name, isCask);
                    row.id.name.contains(text, Qt::CaseInsensitive) && !inventory().value().isInstalled(row.id))
                    rows.append(std::move(row));
        };
        add(m_hits.formulae, false);
        add(m_hits.casks, true);
    }
    table()->setRows(std::move(rows));
    const auto count = table()->model().totalRows();
    QString line = text.isEmpty() ? tr("Installed and available packages") : tr("%1 found").arg(count);
    if (m_isAsking)
        line += tr(" · asking Homebrew…");
    if (!m_problem.isEmpty())
        line = m_problem.section(QLatin1Char('\n'), 0, 0);
    header()->setSubtitle(line);
    if (text.isEmpty())
        table()->emptyState()->show(QStringLiteral("search"), tr("Find a Package"),
                                    tr("Type a name. Installed packages appear at once, available ones a moment later."));
    else
        table()->emptyState()->show(QStringLiteral("search"), m_isAsking ? tr("Searching…") : tr("Nothing Found"),
                                    tr("Neither installed nor available under “%1”.").arg(text));
}

} // namespace larkspur::ui
