#include "Shell/writableFields.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QValidator>
#include <QVariant>

namespace corv {
namespace {

using Relation = QPair<QAccessibleInterface*, QAccessible::Relation>;

/// A field as Qt Quick describes it, which may also be written.
class WritableField : public QAccessibleObject, public QAccessibleEditableTextInterface
{
public:
    /// `described` is the description by Qt Quick. It is registered, as everything that is asked
    /// for, and goes with this.
    WritableField(QObject* field, QAccessibleInterface* described)
        : QAccessibleObject(field), m_described(described), m_id(QAccessible::uniqueId(described))
    {
    }

    ~WritableField() override
    {
        if (QAccessible::accessibleInterface(m_id))
            QAccessible::deleteAccessibleInterface(m_id);
    }
    Q_DISABLE_COPY_MOVE(WritableField)

    QAccessibleInterface* parent() const override { return m_described->parent(); }
    QAccessibleInterface* child(int index) const override { return m_described->child(index); }
    int childCount() const override { return m_described->childCount(); }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        return m_described->indexOfChild(child);
    }
    QVector<Relation> relations(QAccessible::Relation match) const override
    {
        return m_described->relations(match);
    }
    QAccessibleInterface* focusChild() const override { return m_described->focusChild(); }
    QWindow* window() const override { return m_described->window(); }
    QRect rect() const override { return m_described->rect(); }
    QAccessible::Role role() const override { return m_described->role(); }
    QAccessible::State state() const override { return m_described->state(); }
    QString text(QAccessible::Text kind) const override { return m_described->text(kind); }
    void setText(QAccessible::Text kind, const QString& text) override
    {
        m_described->setText(kind, text);
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::EditableTextInterface)
            return static_cast<QAccessibleEditableTextInterface*>(this);
        return m_described->interface_cast(type);
    }

    void insertText(int offset, const QString& text) override { replaceText(offset, offset, text); }
    void deleteText(int start, int end) override { replaceText(start, end, QString()); }
    void replaceText(int start, int end, const QString& text) override
    {
        const bool mayBeWritten =
            object()->property("enabled").toBool() && !object()->property("readOnly").toBool();
        QString whole = object()->property("text").toString();
        if (!mayBeWritten || start < 0 || end < start || end > whole.size())
            return;
        whole.replace(start, end - start, text);
        if (takes(whole))
            object()->setProperty("text", whole);
    }

private:
    /// Whether the field would let it be typed.
    bool takes(QString text) const
    {
        const auto* const validator = qobject_cast<const QValidator*>(
            qvariant_cast<QObject*>(object()->property("validator")));
        int cursor = text.size();
        return !validator || validator->validate(text, cursor) != QValidator::Invalid;
    }

    QAccessibleInterface* m_described;
    QAccessible::Id m_id;
};

/// TextInput and TextEdit, and what the controls make of them.
bool isField(const QObject* object)
{
    const QMetaObject* type = object->metaObject();
    return object->inherits("QQuickItem") && type->indexOfProperty("text") >= 0 &&
           type->indexOfProperty("cursorPosition") >= 0 && type->indexOfProperty("readOnly") >= 0;
}

/// Called for each class of an object, the most derived one first.
QAccessibleInterface* makeWritableField(const QString& className, QObject* object)
{
    static bool asksQtQuick = false;
    if (asksQtQuick || className != QLatin1String(object->metaObject()->className()) ||
        !isField(object))
        return nullptr;
    asksQtQuick = true;
    QAccessibleInterface* described = QAccessible::queryAccessibleInterface(object);
    asksQtQuick = false;
    // The part of a control that is not described by itself has none.
    return described ? new WritableField(object, described) : nullptr;
}

} // namespace

void letReadersWriteIntoFields()
{
    QAccessible::installFactory(makeWritableField);
}

} // namespace corv
