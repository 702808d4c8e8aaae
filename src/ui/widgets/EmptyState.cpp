#include "ui/widgets/EmptyState.h"

#include "ui/theme/Icons.h"

#include <QVBoxLayout>

namespace larkspur::ui {

namespace {

constexpr int textWidth = 260;

} // namespace

EmptyState::EmptyState(QWidget *parent)
    : QWidget(parent)
    , m_picture(new QLabel(this))
    , m_title(new QLabel(this))
    , m_text(new QLabel(this))
    , m_action(new QPushButton(this)) {
    QFont font = m_title->font();
    font.setPointSizeF(font.pointSizeF() * 1.3);
    font.setWeight(QFont::DemiBold);
    m_title->setFont(font);
    m_text->setWordWrap(true);
    m_text->setFixedWidth(textWidth);
    for (QLabel *label : {m_picture, m_title, m_text})
        label->setAlignment(Qt::AlignCenter);
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    layout->addStretch(2);
    for (QWidget *widget : QList<QWidget *>{m_picture, m_title, m_text, m_action})
        layout->addWidget(widget, 0, Qt::AlignHCenter);
    layout->addStretch(3);
    connect(m_action, &QPushButton::clicked, this, &EmptyState::actionRequested);
}

void EmptyState::show(const QString &iconName, const QString &title, const QString &text,
                      const QString &action) {
    m_picture->setPixmap(icon(iconName).pixmap(QSize(48, 48), QIcon::Disabled));
    m_title->setText(title);
    m_text->setText(text);
    m_text->ensurePolished();                                  // its height depends on how it takes its text
    m_text->setFixedHeight(m_text->heightForWidth(textWidth)); // a centred label is not asked for it
    m_action->setText(action);
    m_action->setVisible(!action.isEmpty());
}

} // namespace larkspur::ui
