#include "menus/accelerators.h"

#include "menus/menus.h"
#include "ui/qt_widget.h"

#include <QShortcut>

#include <array>

namespace dorn {

namespace {

struct NamedKey {
    const char* name;
    Qt::Key key;
    Qt::Key twin;       // the same on the keypad, or Key_unknown
    bool in_list_only;  // text fields need it
};

constexpr auto kNamedKeys = std::to_array<NamedKey>({
    {"Ret", Qt::Key_Return, Qt::Key_Enter, true},
    {"Bksp", Qt::Key_Backspace, Qt::Key_unknown, true},
    {"Del", Qt::Key_Delete, Qt::Key_unknown, true},
    {"<-", Qt::Key_Left, Qt::Key_unknown, false},
    {"->", Qt::Key_Right, Qt::Key_unknown, false},
});

const NamedKey* find_key(const char* name) {
    for (const NamedKey& key : kNamedKeys) {
        if (qstrcmp(key.name, name) == 0) return &key;
    }
    return nullptr;
}

Qt::KeyboardModifiers qt_modifiers(uint32_t modifiers) {
    Qt::KeyboardModifiers converted;
    if ((modifiers & kModCtrl) != 0) converted |= Qt::ControlModifier;
    if ((modifiers & kModAlt) != 0) converted |= Qt::AltModifier;
    if ((modifiers & kModShift) != 0) converted |= Qt::ShiftModifier;
    return converted;
}

}  // namespace

QString accelerator_text(const MenuItem& item) {
    if (item.key == nullptr) return {};
    QString text;
    if ((item.modifiers & kModCtrl) != 0) text += QStringLiteral("Ctrl-");
    if ((item.modifiers & kModAlt) != 0) text += QStringLiteral("Alt-");
    if ((item.modifiers & kModShift) != 0) text += QStringLiteral("Shift-");
    return text + QLatin1String(item.key);
}

QList<QKeySequence> accelerator_keys(const MenuItem& item) {
    if (item.key == nullptr) return {};
    const Qt::KeyboardModifiers modifiers = qt_modifiers(item.modifiers);
    const NamedKey* named = find_key(item.key);
    if (named == nullptr) {
        const QKeySequence key(QString::fromLatin1(item.key));
        return {QKeySequence(QKeyCombination(modifiers, key[0].key()))};
    }
    QList<QKeySequence> keys{QKeySequence(QKeyCombination(modifiers, named->key))};
    if (named->twin != Qt::Key_unknown)
        keys.append(QKeySequence(QKeyCombination(modifiers, named->twin)));
    return keys;
}

void accelerator_install(const MenuItem& item) {
    if (item.key == nullptr) return;
    // The list opens its selection itself, once Enter is not wanted by what is being typed.
    if (qstrcmp(item.key, "Ret") == 0 && item.modifiers == 0) return;
    const NamedKey* named = find_key(item.key);
    const bool in_list = named != nullptr && named->in_list_only;
    QWidget* owner = qt(w_instance(in_list ? "filelist" : "base"));
    if (owner == nullptr) return;
    const QString name = QStringLiteral("key_") + QLatin1String(item.name);
    if (owner->findChild<QShortcut*>(name, Qt::FindDirectChildrenOnly) != nullptr) return;
    for (const QKeySequence& key : accelerator_keys(item)) {
        auto* shortcut = new QShortcut(key, owner);
        shortcut->setObjectName(name);
        shortcut->setAutoRepeat(false);  // a key held down is one command
        shortcut->setContext(in_list ? Qt::WidgetWithChildrenShortcut : Qt::WindowShortcut);
        QObject::connect(shortcut, &QShortcut::activated, [&item] { menus_run(item.name); });
    }
}

}  // namespace dorn
