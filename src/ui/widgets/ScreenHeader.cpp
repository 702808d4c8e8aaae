#include "ui/widgets/ScreenHeader.h"

#include "ui/theme/Colours.h"
#include "ui/theme/Icons.h"

#include <QAction>

namespace larkspur::ui {

ScreenHeader::ScreenHeader(const QString &title, const QString &filterHint, QWidget *parent)
    : QWidget(parent)
    , m_subtitle(new ElidedLabel(this))
    , m_filter(new QLineEdit(this))
    , m_controls(new QHBoxLayout) {
    auto *heading = new QLabel(title, this);
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * 1.45);
    font.setWeight(QFont::DemiBold);
    heading->setFont(font);
    m_subtitle->setForegroundRole(QPalette::PlaceholderText);
    m_filter->setPlaceholderText(filterHint);
    m_filter->setAccessibleName(filterHint);
    m_filter->setClearButtonEnabled(true);
    m_filter->addAction(icon(QStringLiteral("search")), QLineEdit::LeadingPosition);
    m_filter->setMinimumWidth(160);

    m_controls->setSpacing(10);
    auto *top = new QHBoxLayout;
    top->addWidget(heading, 1);
    top->addLayout(m_controls);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 10);
    layout->setSpacing(0);
    layout->addLayout(top);
    layout->addWidget(m_subtitle); // below the buttons: it may need the whole width
    layout->addSpacing(8);
    layout->addWidget(m_filter);
}

void ScreenHeader::addControl(QWidget *control) {
    m_controls->addWidget(control);
}

} // namespace larkspur::ui
