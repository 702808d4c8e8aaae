#include "ui/details/PackageDetails.h"

#include "core/async/TaskScope.h"
#include "core/errors/AppError.h"
#include "inventory/queries/InventoryQueries.h"
#include "inventory/records/Caveats.h"
#include "inventory/state/InventoryState.h"
#include "ui/details/DependencyTree.h"
#include "ui/models/PackageTableModel.h"
#include "ui/theme/Colours.h"
#include "ui/theme/Icons.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/LinkLabel.h"
#include "ui/widgets/PackageActions.h"
#include "ui/widgets/PlainText.h"

#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

QLabel *textLabel(const QString &text) {
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

using Answer = Result<Package>;

/// Asks for a package that is not installed and hands the answer over, unless whoever asked is gone.
Task<> fetchPackage(InventoryQueries *queries, PackageRow row, StopToken stop, QPointer<QObject> asker,
                    std::function<void(Answer)> answer) {
    Answer package = std::unexpected(BrewError::stopped());
    if (row.id.isCask) {
        const auto cask = co_await queries->caskDetails(row.fullName, stop);
        package = cask ? Answer(Package(*cask)) : std::unexpected(cask.error());
    } else {
        const auto formula = co_await queries->formulaDetails(row.fullName, stop);
        package = formula ? Answer(Package(*formula)) : std::unexpected(formula.error());
    }
    if (asker && !stop.stop_requested())
        answer(std::move(package));
}

} // namespace

PackageDetails::PackageDetails(InventoryState &inventory, InventoryQueries &queries, TaskScope &tasks,
                               PackageActions &actions, QWidget *parent)
    : QScrollArea(parent)
    , m_inventory(inventory)
    , m_queries(queries)
    , m_tasks(tasks)
    , m_actions(actions) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(tr("Package details"));
    setMinimumWidth(270);
    rebuild();
}

PackageDetails::~PackageDetails() {
    m_stopAsking.request_stop();
}

void PackageDetails::show(const std::optional<PackageRow> &row) {
    const bool isOther = !row || !m_row || row->id != m_row->id || row->installed != m_row->installed;
    m_row = row;
    if (isOther) {
        m_stopAsking.request_stop();
        m_stopAsking = StopSource();
        m_asked.reset();
        m_problem.clear();
        if (row && !m_inventory.value().isInstalled(row->id))
            askHomebrew(*row);
    }
    rebuild();
}

void PackageDetails::askHomebrew(const PackageRow &row) {
    m_tasks.spawn(QStringLiteral("The look-up of ") + row.fullName,
                  fetchPackage(&m_queries, row, m_stopAsking.get_token(), this, [this](Answer answer) {
                      if (answer)
                          m_asked = std::move(*answer);
                      else
                          m_problem = AppError::from(answer.error()).message();
                      rebuild();
                  }));
}

PackageDetails::Content PackageDetails::content() const {
    Content content{m_row, m_asked, {}, m_inventory.value().brewPrefix.value_or(QString()), m_problem};
    if (!m_row)
        return content;
    const Inventory &inventory = m_inventory.value();
    if (const Cask *cask = m_row->id.isCask ? inventory.cask(m_row->fullName) : nullptr)
        content.package = *cask;
    if (const Formula *formula = m_row->id.isCask ? nullptr : inventory.formula(m_row->fullName))
        content.package = *formula;
    if (!m_row->id.isCask)
        content.dependents = DependencyGraph(inventory.installedFormulae).dependents(m_row->id.name);
    return content;
}

void PackageDetails::rebuild() {
    Content now = content();
    if (m_shown == now)
        return;
    m_shown = std::move(now);
    auto *pane = new QWidget;
    m_layout = new QVBoxLayout(pane);
    m_layout->setContentsMargins(18, 16, 18, 16);
    m_layout->setSpacing(8);
    if (!m_row) {
        showNothing();
    } else if (!m_shown->package) {
        addHeading(m_row->title, {}, m_problem.isEmpty() ? tr("Asking Homebrew…") : m_problem);
        addButtons();
    } else if (const Formula *formula = std::get_if<Formula>(&*m_shown->package)) {
        showFormula(*formula);
    } else {
        showCask(std::get<Cask>(*m_shown->package));
    }
    m_layout->addStretch(1);
    setWidget(pane);
}

void PackageDetails::showNothing() {
    auto *empty = new EmptyState;
    empty->show(QStringLiteral("package"), tr("No Package Selected"),
                tr("Select a package to see all about it."));
    m_layout->addWidget(empty, 1);
}

void PackageDetails::addHeading(const QString &name, const QString &version, const QString &description) {
    auto *title = textLabel(name);
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setWeight(QFont::DemiBold);
    title->setFont(font);
    m_layout->addWidget(title);
    if (!version.isEmpty()) {
        auto *line = textLabel(version);
        line->setForegroundRole(QPalette::PlaceholderText);
        m_layout->addWidget(line);
    }
    if (!description.isEmpty())
        addText(description);
}

void PackageDetails::addButtons() {
    auto *row = new QHBoxLayout;
    const PackageRow package = *m_row;
    const auto add = [&](const QString &iconName, const QString &text, std::function<void()> action) {
        auto *button = new QPushButton(icon(iconName), text);
        button->setAccessibleName(QStringLiteral("%1 %2").arg(text, package.title));
        connect(button, &QPushButton::clicked, this, [action] { action(); });
        row->addWidget(button);
    };
    if (!package.newVersion.isEmpty())
        add(QStringLiteral("upgrade"), tr("Upgrade"),
            [this, package] { m_actions.upgrade({package}, this); });
    if (!package.snooze.isEmpty())
        add(QStringLiteral("snoozed"), tr("Unsnooze"), [this, package] { m_actions.unsnooze({package}); });
    for (const QString &version : m_actions.rollbackVersions(package).first(
             std::min<qsizetype>(1, m_actions.rollbackVersions(package).size())))
        add(QStringLiteral("timemachine"), tr("Roll Back to %1…").arg(inCaption(version)),
            [this, package, version] { m_actions.rollBack(package, version, this); });
    if (package.installed)
        add(QStringLiteral("uninstall"), tr("Uninstall…"),
            [this, package] { m_actions.uninstall({package}, window()); });
    else
        add(QStringLiteral("install"), tr("Install"), [this, package] { m_actions.install({package}); });
    row->addStretch(1);
    m_layout->addLayout(row);
}

void PackageDetails::addField(const QString &name, const QString &value) {
    if (value.isEmpty())
        return;
    auto *row = new QHBoxLayout;
    auto *label = new QLabel(name);
    label->setForegroundRole(QPalette::PlaceholderText);
    label->setFixedWidth(96);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    row->addWidget(label);
    row->addWidget(textLabel(value), 1);
    m_layout->addLayout(row);
}

void PackageDetails::addState() {
    addField(tr("Pinned"), m_row->pinned ? tr("held at this version") : QString());
    addField(tr("Snoozed"), m_row->snooze);
    addField(tr("Size"), sizeText(m_row->bytes));
}

void PackageDetails::addLink(const QString &name, const std::optional<QString> &address) {
    if (!address || address->isEmpty())
        return;
    auto *label = new LinkLabel;
    label->showAddress(*address);
    auto *row = new QHBoxLayout;
    auto *title = new QLabel(name);
    title->setForegroundRole(QPalette::PlaceholderText);
    title->setFixedWidth(96);
    title->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    row->addWidget(title);
    row->addWidget(label, 1);
    m_layout->addLayout(row);
}

void PackageDetails::addSection(const QString &title) {
    auto *label = new QLabel(title);
    QFont font = label->font();
    font.setWeight(QFont::DemiBold);
    label->setFont(font);
    label->setContentsMargins(0, 10, 0, 0);
    m_layout->addWidget(label);
}

void PackageDetails::addText(const QString &text) {
    m_layout->addWidget(textLabel(text));
}

void PackageDetails::showFormula(const Formula &formula) {
    const QString version = m_row->newVersion.isEmpty()
                                ? formula.version
                                : QStringLiteral("%1 → %2").arg(formula.version, m_row->newVersion);
    addHeading(formula.fullName, version, formula.description.value_or(QString()));
    addButtons();
    addField(tr("Kind"), tr("Formula"));
    if (m_row->installed) {
        addField(tr("Installed"), formula.installedOn ? QLocale().toString(formula.installedOn->toLocalTime(),
                                                                           QLocale::ShortFormat)
                                                      : tr("at an unknown time"));
        addField(tr("Because"),
                 formula.installedAsDependency ? tr("others need it") : tr("you asked for it"));
    }
    addState();
    addField(tr("Licence"), formula.license.value_or(QString()));
    addLink(tr("Home page"), formula.homepage);
    addLink(tr("Source"), formula.sourceURL);
    addDependencies(formula);
    if (formula.caveats) {
        addSection(tr("Caveats"));
        addText(caveatsText(*formula.caveats, m_shown->brewPrefix));
    }
}

void PackageDetails::addDependencies(const Formula &formula) {
    if (!formula.dependencies.isEmpty()) {
        addSection(tr("Needs"));
        auto *tree = new DependencyTree(DependencyGraph(m_inventory.value().installedFormulae), formula);
        connect(tree, &DependencyTree::packageRequested, this,
                [this](const QString &name) { Q_EMIT packageRequested({name, false}); });
        m_layout->addWidget(tree);
    }
    const QStringList &dependents = m_shown->dependents;
    if (dependents.isEmpty())
        return;
    addSection(tr("Needed by"));
    auto *links = new LinkLabel;
    links->showNames(dependents);
    connect(links, &QLabel::linkActivated, this,
            [this](const QString &name) { Q_EMIT packageRequested({name, false}); });
    m_layout->addWidget(links);
}

void PackageDetails::showCask(const Cask &cask) {
    const QString version = m_row->newVersion.isEmpty()
                                ? cask.version
                                : QStringLiteral("%1 → %2").arg(cask.version, m_row->newVersion);
    addHeading(cask.name.isEmpty() ? cask.token : cask.name.first(), version,
               cask.description.value_or(QString()));
    addButtons();
    addField(tr("Kind"), tr("Cask"));
    addField(tr("Token"), cask.token);
    addField(tr("Also called"), cask.name.mid(1).join(QStringLiteral(", ")));
    addField(tr("Applications"), cask.appNames.join(QStringLiteral(", ")));
    if (cask.installedOn)
        addField(tr("Installed"), QLocale().toString(cask.installedOn->toLocalTime(), QLocale::ShortFormat));
    if (cask.actualVersion)
        addField(tr("App says"), cask.actualBuild && !cask.actualBuild->isEmpty()
                                     ? QStringLiteral("%1 (%2)").arg(*cask.actualVersion, *cask.actualBuild)
                                     : *cask.actualVersion);
    addState();
    addField(tr("Rosetta"), cask.requiresRosetta ? tr("needed on Apple silicon") : QString());
    addLink(tr("Home page"), cask.homepage);
    addLink(tr("Download"), cask.url);
    if (cask.caveats) {
        addSection(tr("Caveats"));
        addText(caveatsText(*cask.caveats, m_shown->brewPrefix));
    }
}

} // namespace larkspur::ui
