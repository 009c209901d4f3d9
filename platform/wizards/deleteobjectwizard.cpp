#include "deleteobjectwizard.h"

#include "localstorage.h"
#include "styleditemdelegate.h"
#include "vdglobals.h"
#include "vdwizardpage.h"

#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QProgressBar>
#include <QStyle>
#include <QStandardItemModel>
#include <QVBoxLayout>

namespace {
enum PageId { ListPage = 0, ProgressPage = 1 };

// A page that is complete only when its owner says so.
class CheckedPage : public VDWizardPage
{
public:
    using VDWizardPage::VDWizardPage;
    std::function<bool()> complete;
    bool isComplete() const override { return complete ? complete() : true; }
};
}  // namespace

DeleteObjectWizard::DeleteObjectWizard(QWidget* parent) : PageListWizard(parent)
{
    // Tasks cross queued connections, and their outcomes come back by the slot's name.
    qRegisterMetaType<vorandel::TaskInfo>("vorandel::TaskInfo");
    qRegisterMetaType<vorandel::TYPE_ID>("vorandel::TYPE_ID");
    setWindowTitle(tr("Мастер удаления"));
    setMinimumSize(640, 420);
    setOption(QWizard::NoCancelButtonOnLastPage, true);

    auto* listPage = new CheckedPage(this);
    m_listPage = listPage;
    m_listPage->setTitle(tr("Удаляемые объекты"));
    m_listPage->setSubTitle(tr("Будут удалены следующие объекты:"));
    m_listPage->setCommitPage(true);
    m_listPage->setButtonText(QWizard::CommitButton, tr("Удалить"));
    m_model = new QStandardItemModel(0, 2, this);
    m_list = new QListView(m_listPage);
    m_list->setObjectName(QStringLiteral("objectList"));
    m_list->setModel(m_model);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setWordWrap(true);
    m_verify = new QCheckBox(tr("Подтверждаю удаление"), m_listPage);
    m_verify->setObjectName(QStringLiteral("verifyBox"));
    m_verify->hide();
    connect(m_verify, &QCheckBox::toggled, m_listPage, &QWizardPage::completeChanged);
    listPage->complete = [this] { return !m_uids.isEmpty() && (m_verify->isHidden() || m_verify->isChecked()); };
    auto* listLayout = new QVBoxLayout(m_listPage);
    listLayout->addWidget(m_list);
    listLayout->addWidget(m_verify);

    auto* progressPage = new CheckedPage(this);
    m_progressPage = progressPage;
    m_progressPage->setTitle(tr("Удаление"));
    m_progress = new QProgressBar(m_progressPage);
    m_progress->setObjectName(QStringLiteral("progressBar"));
    m_summary = new QLabel(m_progressPage);
    m_summary->setObjectName(QStringLiteral("summary"));
    m_results = new QListWidget(m_progressPage);
    m_results->setObjectName(QStringLiteral("results"));
    m_results->setSelectionMode(QAbstractItemView::NoSelection);
    m_results->setFocusPolicy(Qt::NoFocus);
    m_results->setWordWrap(true);
    progressPage->complete = [this] { return m_sent && m_pending.isEmpty(); };
    auto* progressLayout = new QVBoxLayout(m_progressPage);
    progressLayout->addWidget(m_progress);
    progressLayout->addWidget(m_summary);
    progressLayout->addWidget(m_results);

    setPage(ListPage, m_listPage);
    setPage(ProgressPage, m_progressPage);
}

DeleteObjectWizard::~DeleteObjectWizard() = default;

void DeleteObjectWizard::setUids(const QList<vorandel::TYPE_ID>& uids)
{
    m_uids = uids;
    fillList();
    emit m_listPage->completeChanged();
}

void DeleteObjectWizard::setNeedVerify(bool need)
{
    m_verify->setVisible(need);
    m_verify->setChecked(false);
    emit m_listPage->completeChanged();
}

void DeleteObjectWizard::setItemDelegate(StyledItemDelegate* delegate, QAbstractItemView* view)
{
    if (delegate && !delegate->parent())
        delegate->setParent(this);
    (view ? view : m_list)->setItemDelegate(delegate);
}

QString DeleteObjectWizard::nameOf(vorandel::TYPE_ID uid) const
{
    const QString name = VDGlobals::objectName(vorandel::LocalStorage::instance()->object(uid));
    return name.isEmpty() ? tr("Объект %1").arg(uid) : name;
}

void DeleteObjectWizard::fillList()
{
    m_model->removeRows(0, m_model->rowCount());
    for (const vorandel::TYPE_ID uid : qAsConst(m_uids)) {
        const vorandel::ObjectInfo object = vorandel::LocalStorage::instance()->object(uid);
        QVariantHash parameters;
        for (auto it = object.parameters.cbegin(); it != object.parameters.cend(); ++it)
            parameters.insert(it.key(), it.value());
        auto* name = new QStandardItem(nameOf(uid));
        name->setData(parameters, ParametersRole);
        name->setData(uid, Qt::UserRole);
        name->setIcon(QIcon::fromTheme(QStringLiteral("object-%1").arg(object.type)));
        m_model->appendRow({name, new QStandardItem(object.type)});
    }
}

void DeleteObjectWizard::showButtons(int id)
{
    PageListWizard::showButtons(id);
    if (id == ProgressPage && !m_sent)
        sendTasks();
}

void DeleteObjectWizard::sendTasks()
{
    m_sent = true;
    m_pending = m_uids;
    m_progress->setRange(0, m_uids.size());
    m_progress->setValue(0);
    m_summary->setText(tr("Удаление…"));
    for (const vorandel::TYPE_ID uid : qAsConst(m_uids)) {
        const QString name = nameOf(uid);
        vorandel::TaskInfo task;
        task.uid = uid;
        task.type = QStringLiteral("delete_object");
        task.message = tr("Удален объект %1").arg(name);
        task.errorMessage = tr("Ошибка удаления объекта %1").arg(name);
        task.receiver = this;
        task.slot = QStringLiteral("objectRemoved");
        emit appendTask(task);
    }
    emit m_progressPage->completeChanged();
}

void DeleteObjectWizard::objectRemoved(vorandel::TYPE_ID uid)
{
    // Answers come in the order of the tasks; a failure names no object.
    if (m_pending.isEmpty())
        return;
    const vorandel::TYPE_ID expected = m_pending.takeFirst();
    const QString name = m_model->item(m_uids.indexOf(expected))->text();
    const bool removed = uid != 0;
    if (!removed)
        ++m_failures;
    auto* result = new QListWidgetItem(removed ? tr("Удалено: %1").arg(name) : tr("Ошибка удаления: %1").arg(name), m_results);
    result->setIcon(removed ? QIcon::fromTheme(QStringLiteral("common-online"), style()->standardIcon(QStyle::SP_DialogApplyButton))
                            : QIcon::fromTheme(QStringLiteral("common-cancel"), style()->standardIcon(QStyle::SP_MessageBoxCritical)));
    result->setData(Qt::UserRole, expected);
    m_results->scrollToItem(result);
    m_progress->setValue(m_progress->value() + 1);
    if (m_pending.isEmpty()) {
        m_summary->setText(m_failures == 0 ? tr("Удаление завершено.")
                                           : tr("Удаление завершено с ошибками: %1 из %2.").arg(m_failures).arg(m_uids.size()));
    }
    emit m_progressPage->completeChanged();
}
