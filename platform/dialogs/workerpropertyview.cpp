#include "workerpropertyview.h"

#include "ui_workerpropertyview.h"

namespace {
struct Field
{
    const char* key;
    QLineEdit* Ui::WorkerPropertyView::*edit;
};

constexpr Field Fields[] = {
    {"PT_SURNAME", &Ui::WorkerPropertyView::surnameEdit},
    {"PT_NAME", &Ui::WorkerPropertyView::nameEdit},
    {"PT_PATRONYMIC", &Ui::WorkerPropertyView::patronymicEdit},
    {"PT_WORKERNUM", &Ui::WorkerPropertyView::workerNumEdit},
};
}  // namespace

WorkerPropertyView::WorkerPropertyView(QWidget* parent)
    : PropertyBaseWidget(parent), ui(std::make_unique<Ui::WorkerPropertyView>())
{
    ui->setupUi(this);
    for (const Field& field : Fields)
        connect(ui.get()->*field.edit, &QLineEdit::textEdited, this, &PropertyBaseWidget::dataEdited);
}

WorkerPropertyView::~WorkerPropertyView() = default;

void WorkerPropertyView::setReadOnly(bool readOnly)
{
    PropertyBaseWidget::setReadOnly(readOnly);
    for (const Field& field : Fields)
        (ui.get()->*field.edit)->setReadOnly(readOnly);
}

void WorkerPropertyView::setCurrent(const vorandel::OBJECT_HASH& objects)
{
    PropertyBaseWidget::setCurrent(objects);
    const QHash<QString, QString>& parameters = currentObject().parameters;
    for (const Field& field : Fields)
        (ui.get()->*field.edit)->setText(parameters.value(QLatin1String(field.key)));
}

QHash<QString, QString> WorkerPropertyView::editedProperties() const
{
    QHash<QString, QString> edited;
    const QHash<QString, QString>& parameters = currentObject().parameters;
    for (const Field& field : Fields) {
        const QString key = QLatin1String(field.key);
        const QString text = (ui.get()->*field.edit)->text().trimmed();
        if (text != parameters.value(key).trimmed())
            edited.insert(key, text);
    }
    return edited;
}
