#include "propertybasewidget.h"

PropertyBaseWidget::PropertyBaseWidget(QWidget* parent) : QWidget(parent)
{
    // Owners hand saves on by queued connections.
    qRegisterMetaType<vorandel::TYPE_ID>("vorandel::TYPE_ID");
}

QString PropertyBaseWidget::widgetUid() const
{
    return QString::fromLatin1(metaObject()->className());
}

QList<QWidget*> PropertyBaseWidget::subPages() const
{
    return {};
}

void PropertyBaseWidget::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
}

void PropertyBaseWidget::setCurrent(const vorandel::OBJECT_HASH& objects)
{
    m_current = objects;
}

const vorandel::ObjectInfo& PropertyBaseWidget::currentObject() const
{
    static const vorandel::ObjectInfo none;
    return m_current.isEmpty() ? none : m_current.cbegin().value();
}

QHash<QString, QString> PropertyBaseWidget::editedProperties() const
{
    return {};
}

vorandel::OBJECT_HASH PropertyBaseWidget::changedObjects() const
{
    const vorandel::ObjectInfo& object = currentObject();
    const QHash<QString, QString> edits = editedProperties();
    if (!object.isValid() || edits.isEmpty())
        return {};
    vorandel::ObjectInfo changed;
    changed.uid = object.uid;
    changed.type = object.type;
    changed.parent = object.parent;
    changed.parameters = edits;
    vorandel::OBJECT_HASH objects;
    objects.insert(changed.uid, changed);
    return objects;
}

// The owner collects the edits through changedObjects(); a tab with more to hand on says so here.
void PropertyBaseWidget::applyChanges() {}

void PropertyBaseWidget::rejectChanges()
{
    setCurrent(vorandel::OBJECT_HASH(m_current));
}

void PropertyBaseWidget::showSubPage(int) {}

void PropertyBaseWidget::saved(vorandel::TYPE_ID uid)
{
    const vorandel::ObjectInfo& object = currentObject();
    if (uid == 0 || object.uid != uid)
        return;
    vorandel::ObjectInfo updated = object;
    const QHash<QString, QString> edits = editedProperties();
    for (auto it = edits.cbegin(); it != edits.cend(); ++it)
        updated.parameters.insert(it.key(), it.value());
    vorandel::OBJECT_HASH objects;
    objects.insert(uid, updated);
    setCurrent(objects);
}
