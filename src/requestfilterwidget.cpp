#include "requestfilterwidget.h"
#include "ui_requestfilterwidget.h"

#include "requestviewlogging.h"

#include <QButtonGroup>

namespace {
const char* const DataProperty = "data";
}

RequestFilterWidget::RequestFilterWidget(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::RequestFilterWidget>()), m_buttons(new QButtonGroup(this))
{
    ui->setupUi(this);

    // Icons are asked of the theme, not loaded from it: the console may install its theme
    // after the bar is built.
    ui->tbAll->setIcon(QIcon::fromTheme(QStringLiteral("common-nofilter")));
    ui->tbConfirmed->setIcon(QIcon::fromTheme(QStringLiteral("common-pause")));
    ui->tbNotConfirmed->setIcon(QIcon::fromTheme(QStringLiteral("common-pause1")));
    ui->tbFinished->setIcon(QIcon::fromTheme(QStringLiteral("common-online")));
    ui->tbActive->setIcon(QIcon::fromTheme(QStringLiteral("common-play")));
    ui->tbRejected->setIcon(QIcon::fromTheme(QStringLiteral("common-cancel")));

    ui->tbConfirmed->setProperty(DataProperty, QVariantList{2, 3});
    // A request without a state has an empty one and counts as not confirmed.
    ui->tbNotConfirmed->setProperty(DataProperty, QVariantList{0, QString()});
    ui->tbFinished->setProperty(DataProperty, QVariantList{5});
    ui->tbActive->setProperty(DataProperty, QVariantList{4});
    ui->tbRejected->setProperty(DataProperty, QVariantList{1});

    m_buttons->setExclusive(false);
    for (QAbstractButton* button : {ui->tbConfirmed, ui->tbNotConfirmed, ui->tbActive, ui->tbFinished, ui->tbRejected})
        m_buttons->addButton(button);

    connect(ui->tbAll, &QToolButton::clicked, this, &RequestFilterWidget::clearFilter);
    connect(m_buttons, qOverload<QAbstractButton*>(&QButtonGroup::buttonClicked), this,
            &RequestFilterWidget::buttonClicked);
}

RequestFilterWidget::~RequestFilterWidget() = default;

QStringList RequestFilterWidget::currentFilter() const
{
    QStringList values;
    const QList<QAbstractButton*> buttons = m_buttons->buttons();
    for (const QAbstractButton* button : buttons) {
        if (!button->isChecked())
            continue;
        const QVariantList data = button->property(DataProperty).toList();
        for (const QVariant& value : data)
            values.append(value.toString());
    }
    return values;
}

void RequestFilterWidget::clearFilter()
{
    const QList<QAbstractButton*> buttons = m_buttons->buttons();
    for (QAbstractButton* button : buttons)
        button->setChecked(false);
    buttonClicked(nullptr);
}

void RequestFilterWidget::buttonClicked(QAbstractButton*)
{
    const QStringList filter = currentFilter();
    qCDebug(rvc) << "filter changed" << filter;
    emit filterChanged(filter);
}
