#include "ui/widgets/LinkLabel.h"

#include <QUrl>

namespace larkspur::ui {

namespace {

QString link(const QString &target, const QString &escapedTitle) {
    return QStringLiteral("<a href=\"%1\">%2</a>").arg(target.toHtmlEscaped(), escapedTitle);
}

bool isOfTheWeb(const QString &address) {
    const QUrl url(address);
    return url.isValid() && !url.host().isEmpty() &&
           (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

} // namespace

LinkLabel::LinkLabel(QWidget *parent)
    : QLabel(parent) {
    setWordWrap(true);
    setTextFormat(Qt::RichText);
}

void LinkLabel::showNames(const QStringList &names) {
    QStringList links;
    for (const QString &name : names)
        links.append(link(name, name.toHtmlEscaped()));
    setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    setText(links.join(QStringLiteral(", ")));
}

void LinkLabel::showAddress(const QString &address) {
    const bool isLink = isOfTheWeb(address);
    QString title = address.toHtmlEscaped();
    title.replace(QLatin1Char('/'), QStringLiteral("/\u200B")); // where a long address may be wrapped
    setTextInteractionFlags(Qt::TextBrowserInteraction);
    setOpenExternalLinks(isLink);
    setText(isLink ? link(address, title) : title);
}

} // namespace larkspur::ui
