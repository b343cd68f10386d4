#include "UpdateOfferDialog.h"

#include <QApplication>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QStyle>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

namespace {

// Links from a feed only ever open in the browser.
bool isWebLink(const QUrl &url)
{
    return url.isValid() && (url.scheme() == u"https" || url.scheme() == u"http");
}

} // namespace

UpdateOfferDialog::UpdateOfferDialog(const QString &productName, const QString &currentVersion,
                                     AppcastItem item, QWidget *parent)
    : QDialog(parent)
    , m_item(std::move(item))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("updateOfferDialog"));
    setWindowTitle(tr("Software Update"));
    // Escape and the window's close button count as "later": nothing is recorded.

    auto *icon = new QLabel;
    const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    QIcon appIcon = QApplication::windowIcon();
    if (appIcon.isNull())
        appIcon = style()->standardIcon(QStyle::SP_MessageBoxInformation, nullptr, this);
    icon->setPixmap(appIcon.pixmap(iconSize, iconSize));
    icon->setAlignment(Qt::AlignTop);

    m_headline = tr("A new version of %1 is available.").arg(productName);
    auto *headline = new QLabel(QStringLiteral("<b>%1</b>").arg(m_headline.toHtmlEscaped()));
    QString detailText = tr("%1 %2 is now available; you have %3.")
                             .arg(productName, m_item.displayVersion, currentVersion);
    if (m_item.publicationDate.isValid())
        detailText += QLatin1Char(' ')
            + tr("Released on %1.")
                  .arg(QLocale().toString(m_item.publicationDate.toLocalTime().date(),
                                          QLocale::LongFormat));
    auto *detail = new QLabel(detailText);
    detail->setWordWrap(true);

    auto *textColumn = new QVBoxLayout;
    textColumn->addWidget(headline);
    textColumn->addWidget(detail);

    m_notes = new QTextBrowser;
    m_notes->setObjectName(QStringLiteral("releaseNotes"));
    m_notes->setOpenLinks(false);
    connect(m_notes, &QTextBrowser::anchorClicked, this, [](const QUrl &url) {
        if (isWebLink(url))
            QDesktopServices::openUrl(url);
    });
    const QUrl notesLink(m_item.releaseNotesLink);
    if (!m_item.releaseNotes.isEmpty()) {
        if (Qt::mightBeRichText(m_item.releaseNotes))
            m_notes->setHtml(m_item.releaseNotes);
        else
            m_notes->setPlainText(m_item.releaseNotes);
    } else if (isWebLink(notesLink)) {
        m_notes->setHtml(QStringLiteral("<p><a href=\"%1\">%2</a></p>")
                             .arg(notesLink.toString(QUrl::FullyEncoded).toHtmlEscaped(),
                                  tr("Read the release notes online").toHtmlEscaped()));
    } else {
        m_notes->setPlainText(tr("This release comes without release notes."));
    }
    m_notes->setMinimumSize(420, 200);

    // The usual order of an update offer: the lasting refusal apart on the left, the choice to
    // take it last.
    auto *skip = new QPushButton(tr("Skip This Version"));
    auto *later = new QPushButton(tr("Remind Me Later"));
    auto *download = new QPushButton(tr("Download…"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(skip);
    buttons->addStretch(1);
    buttons->addWidget(later);
    buttons->addWidget(download);
    skip->setObjectName(QStringLiteral("skipButton"));
    later->setObjectName(QStringLiteral("laterButton"));
    download->setObjectName(QStringLiteral("downloadButton"));
    download->setEnabled(isWebLink(QUrl(m_item.link)));
    download->setToolTip(QUrl(m_item.link).toDisplayString());
    download->setDefault(true);
    download->setFocus();
    connect(skip, &QPushButton::clicked, this, [this] { choose(Choice::skip); });
    connect(later, &QPushButton::clicked, this, [this] { choose(Choice::later); });
    connect(download, &QPushButton::clicked, this, [this] { choose(Choice::download); });

    auto *top = new QHBoxLayout;
    top->addWidget(icon);
    top->addLayout(textColumn, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(new QLabel(tr("Release notes:")));
    layout->addWidget(m_notes, 1);
    layout->addLayout(buttons);
}

QString UpdateOfferDialog::headline() const
{
    return m_headline;
}

QString UpdateOfferDialog::releaseNotesText() const
{
    return m_notes->toPlainText();
}

void UpdateOfferDialog::choose(Choice choice)
{
    emit chosen(choice);
    if (choice == Choice::download && isWebLink(QUrl(m_item.link)))
        QDesktopServices::openUrl(QUrl(m_item.link));
    close();
}
