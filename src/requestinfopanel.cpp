#include "requestinfopanel.h"
#include "ui_requestinfopanel.h"

#include "constants.h"
#include "localstorage.h"
#include "propertypanelhelper.h"
#include "requestmodel.h"
#include "vdglobals.h"
#include "vdstyle.h"

#include <QDateTime>
#include <QSet>
#include <QTextCursor>
#include <QTextTable>

using vorandel::LocalStorage;
using vorandel::ObjectInfo;

namespace {

const QString NonBreakingSpace = QStringLiteral("&nbsp;");

QTextTableFormat borderlessTable()
{
    QTextTableFormat format;
    format.setCellPadding(0);
    format.setCellSpacing(0);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_None);
    return format;
}

// Two empty blocks, the title, and a new block for the content.
void startSection(QTextCursor& cursor, const QString& title, const QTextCharFormat& format)
{
    cursor.insertBlock();
    cursor.insertBlock();
    cursor.insertText(title, format);
    cursor.insertBlock();
}

// Lines of content, each in its own block.
void insertLines(QTextCursor& cursor, const QStringList& lines, const QTextCharFormat& format)
{
    for (int i = 0; i < lines.size(); ++i) {
        if (i > 0)
            cursor.insertBlock();
        cursor.insertText(lines.at(i), format);
    }
}

// An icon at `extent` pixels, named in the document after its theme name and size so that one
// picture serves every line that shows it. An icon that the theme lacks is left out rather than
// drawn as the document's sign of a broken image.
void insertIcon(QTextCursor& cursor, const QIcon& icon, int extent)
{
    const QPixmap pixmap = icon.pixmap(extent, extent, QIcon::Normal, QIcon::Off);
    if (pixmap.isNull())
        return;
    const QString name = icon.name();
    cursor.insertImage(pixmap.toImage(),
                       name.isEmpty() ? QString() : QStringLiteral("icon:%1/%2").arg(name).arg(extent));
}

// A labelled value: the value of the request's key, or the placeholder that agrees with the
// label's noun when it has none.
QString labelled(const QString& label, const ObjectInfo& request, const QString& key, const QString& placeholder)
{
    const QString value = request.parameters.value(key);
    return label.arg(value.isEmpty() ? placeholder : value);
}

QSet<vorandel::TYPE_ID> linkedUsers(const ObjectInfo& request, unsigned int type)
{
    QSet<vorandel::TYPE_ID> users;
    const auto& links = request.inherits;
    for (auto it = links.constFind(type); it != links.cend() && it.key() == type; ++it)
        users.insert(it->second);
    return users;
}

void writeHead(QTextCursor& cursor, const ObjectInfo& request, const ObjectInfo& worker,
               const QTextCharFormat& nameFormat)
{
    // Until the newest photo has come from the server, the preview stands in.
    QByteArray photoBytes = LocalStorage::instance()->blob(worker.uid, QStringLiteral("PT_PHOTO"));
    if (photoBytes.isEmpty())
        photoBytes = worker.parameters.value(QStringLiteral("PT_PHOTO_PREVIEW")).toLatin1();
    const QImage photo =
        PropertyPanelHelper::pixmapByPhotoType(db::orgstructure::WORKER, photoBytes, true, QString()).toImage();

    // The photo keeps its width, whatever the name needs: a name too long for the card is cut
    // at the card's edge rather than drawn over the photo, and it is never broken inside a word.
    QTextTableFormat headFormat = borderlessTable();
    headFormat.setColumnWidthConstraints(
        {QTextLength(QTextLength::FixedLength, photo.width() / photo.devicePixelRatioF()),
         QTextLength(QTextLength::VariableLength, 0)});
    QTextTable* head = cursor.insertTable(1, 2, headFormat);
    QTextTableCellFormat nameCell;
    nameCell.setVerticalAlignment(QTextCharFormat::AlignMiddle);
    nameCell.setLeftPadding(30);
    head->cellAt(0, 1).setFormat(nameCell);

    cursor.insertImage(photo);

    cursor.movePosition(QTextCursor::NextCell);
    cursor.insertText(VDGlobals::objectName(request), nameFormat);
}

// One label per group, one after the other in a single block, for the document to wrap.
void writeAccessGroups(QTextCursor& cursor, const ObjectInfo& request, const QFont& font)
{
    const QIcon unlock = QIcon::fromTheme(QStringLiteral("action-unlock"));
    const QStringList names = RequestModel::accessGroupNames(request);
    for (const QString& name : names) {
        cursor.insertImage(PropertyPanelHelper::createColoredText(unlock, name.trimmed(), QColor(Qt::white),
                                                                  vdstyle::vdMainColor, font, 8, 8)
                               .toImage());
    }
}

// The chain in the order of turns, each confirmer with what he has decided. Confirming wins
// over rejecting for one who has done both.
void writeConfirmers(QTextCursor& cursor, const ObjectInfo& request, const QTextCharFormat& format)
{
    const QSet<vorandel::TYPE_ID> confirmed = linkedUsers(request, vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    const QSet<vorandel::TYPE_ID> rejected = linkedUsers(request, vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST);
    const LocalStorage* storage = LocalStorage::instance();
    const QList<vorandel::INHERIT_DATA> chain = RequestModel::confirmChain(request);
    for (const vorandel::INHERIT_DATA& link : chain) {
        const ObjectInfo& user = storage->constObject(link.second, vorandel::USER_DATANAME);
        if (!user.isValid())
            continue;
        const QString icon = confirmed.contains(link.second) ? QStringLiteral("common-online")
            : rejected.contains(link.second)                 ? QStringLiteral("common-cancel")
                                                             : QStringLiteral("object-OT_USER");
        insertIcon(cursor, QIcon::fromTheme(icon), 16);
        cursor.insertHtml(NonBreakingSpace);
        cursor.insertText(RequestModel::userText(user), format);
        cursor.insertBlock();
    }
}

}  // namespace

RequestInfoPanel::RequestInfoPanel(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::RequestInfoPanel>())
{
    ui->setupUi(this);
}

RequestInfoPanel::~RequestInfoPanel() = default;

void RequestInfoPanel::showRequestInfo(const QModelIndex& index)
{
    const QTextCharFormat titleFormat = PropertyPanelHelper::titleformat();
    const QTextCharFormat textFormat = PropertyPanelHelper::textformat();
    const QTextCharFormat nameFormat = PropertyPanelHelper::nameformat();

    const LocalStorage* storage = LocalStorage::instance();
    const vorandel::TYPE_ID uid = index.siblingAtColumn(RequestModel::UidColumn).data().toUInt();
    const ObjectInfo request = storage->constObject(uid, vorandel::PASS_REQUEST_DATANAME);
    const ObjectInfo creator =
        storage->constObject(request.parameters.value(db::pass_request::CREATOR).toUInt(), vorandel::USER_DATANAME);
    const ObjectInfo worker = RequestModel::workerOf(request);
    const QString creatorText = creator.isValid() ? RequestModel::userText(creator) : QString();

    ui->textBrowser->clear();
    QTextCursor cursor(ui->textBrowser->document());
    writeHead(cursor, request, worker, nameFormat);

    // What the table shows of the row: its dates and its state as the model words them.
    const QDateTime begin = index.siblingAtColumn(RequestModel::BeginColumn).data().toDateTime();
    const QDateTime end = index.siblingAtColumn(RequestModel::EndColumn).data().toDateTime();
    const QModelIndex state = index.siblingAtColumn(RequestModel::StateColumn);
    const QIcon stateIcon = state.data(Qt::DecorationRole).value<QIcon>();
    const QString stateText = state.data(Qt::ToolTipRole).toString();

    cursor.movePosition(QTextCursor::End);

    startSection(cursor, tr("Дата начала действия"), titleFormat);
    cursor.insertText(begin.toString(Qt::DefaultLocaleShortDate), textFormat);

    startSection(cursor, tr("Дата окончания действия"), titleFormat);
    cursor.insertText(end.toString(Qt::DefaultLocaleShortDate), textFormat);

    startSection(cursor, tr("Статус"), titleFormat);
    insertIcon(cursor, stateIcon, 24);
    cursor.insertHtml(NonBreakingSpace);
    cursor.insertText(stateText, textFormat);

    startSection(cursor, tr("Группы доступа"), titleFormat);
    writeAccessGroups(cursor, request, textFormat.font());

    const QString notSet = tr("<Не задан>");
    const QString notSetFeminine = tr("<Не задана>");
    const QString kind = tr("Вид: %1");
    const QString number = tr("Номер: %1");

    startSection(cursor, tr("Автомобиль"), titleFormat);
    insertLines(cursor,
                {labelled(kind, request, QStringLiteral("PT_CAR_TYPE"), notSet),
                 labelled(tr("Марка: %1"), request, QStringLiteral("PT_CAR_BRAND"), notSetFeminine),
                 labelled(number, request, QStringLiteral("PT_CAR_NUMBER"), notSet)},
                textFormat);

    startSection(cursor, tr("Документ"), titleFormat);
    insertLines(cursor,
                {labelled(kind, request, db::pass_request::DOC_TYPE, notSet),
                 labelled(tr("Серия: %1"), request, db::pass_request::DOC_SERIES, notSetFeminine),
                 labelled(number, request, db::pass_request::DOC_NUMBER, notSet)},
                textFormat);

    startSection(cursor, tr("Создал"), titleFormat);
    insertIcon(cursor, QIcon::fromTheme(QStringLiteral("object-OT_USER")), 16);
    cursor.insertHtml(NonBreakingSpace);
    cursor.insertText(creatorText.isEmpty() ? tr("<Неизвестен>") : creatorText, textFormat);

    if (request.inherits.contains(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST)) {
        startSection(cursor, tr("Согласующие"), titleFormat);
        writeConfirmers(cursor, request, textFormat);
    }

    startSection(cursor, tr("Комментарий"), titleFormat);
    const QString comment = request.parameters.value(db::pass_request::EXTRA_INFO);
    cursor.insertText(comment.isEmpty() ? notSet : comment, textFormat);
}

void RequestInfoPanel::showMultiRequestsInfo(const QList<QModelIndex>& rows)
{
    QFont font = this->font();
    font.setPointSize(10);
    QTextCharFormat format;
    format.setFont(font);

    ui->textBrowser->clear();
    QTextCursor cursor(ui->textBrowser->document());
    cursor.movePosition(QTextCursor::Start);
    // The card's shape is kept: a table of three rows, of which only the first is written.
    cursor.insertTable(3, 2, borderlessTable());
    cursor.insertText(tr("Выбрано заявок:"), format);
    cursor.movePosition(QTextCursor::NextCell);
    cursor.insertText(QString::number(rows.size()), format);
}

void RequestInfoPanel::clear()
{
    ui->textBrowser->clear();
}
