#include "support_gui/window_test.h"

#include "app/base.h"
#include "app/base_window.h"
#include "config/history.h"
#include "dirmodel/name_translation.h"
#include "filelist/list_view.h"
#include "filelist/pane.h"
#include "fileops/slots.h"
#include "ui/dialogs.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace dorn {

QMainWindow* WindowTest::window_ = nullptr;

void WindowTest::SetUp() {
    if (window_ == nullptr) {
        gConfig = new Config{};
        config_load(*gConfig, nullptr, "config.003");
        init_read_cboxs(nullptr);
        window_ = base_make();
        base_setup(handle(window_), 1);
        base_opening();
        window_->show();
    }
    QApplication::setActiveWindow(window_);  // a menu closed before may have taken that
    show_sandbox();
}

void WindowTest::TearDown() {
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    for (QWidget* window : QApplication::topLevelWidgets())
        if (qobject_cast<QDialog*>(window) != nullptr) window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(ui_is_blocked(handle(window_)));
    QApplication::processEvents();  // what a test left to be done later
    fname_set_translation(0, nullptr);
    config_load(*gConfig, nullptr, "config.003");
    fl_setspec("*");
    fl_newpath(nullptr, "/");
}

void WindowTest::show_sandbox() {
    if (gDir != nullptr && gDir->path == sandbox_.path())
        fl_refresh();
    else
        ASSERT_EQ(fl_newpath(nullptr, sandbox_.path()), 0) << sandbox_.path();
}

std::string WindowTest::row_name(int row) {
    if (row < 0 || row >= static_cast<int>(gPane.rows.size())) return {};
    return fl_column_text(gPane.rows[static_cast<std::size_t>(row)].index, 1);
}

int32_t WindowTest::index_of(const std::string& name) {
    for (int32_t i = 0; i < gDir->count; ++i) {
        if (gDir->entries[i]->name == name) return i;
    }
    return -2;
}

mode_t WindowTest::mode_of(const std::string& name) const {
    struct stat status {};
    return lstat(sandbox_.file(name).c_str(), &status) == 0 ? status.st_mode : 0;
}

std::string WindowTest::selected() {
    std::string names;
    for (int32_t i = 0; i < gDir->count; ++i) {
        if ((gDir->entries[i]->flags & kEntrySelected) == 0) continue;
        if (!names.empty()) names += ' ';
        names += gDir->entries[i]->name;
    }
    return names;
}

std::string WindowTest::text_of(const char* instance) {
    if (const auto* label = qt_instance<QLabel>(instance)) return label->text().toStdString();
    if (const auto* field = qt_instance<QLineEdit>(instance)) return field->text().toStdString();
    const auto* combo = qt_instance<QComboBox>(instance);
    return combo == nullptr ? std::string() : combo->currentText().toStdString();
}

std::string WindowTest::alerts_of(const std::function<void()>& act, const char* button) {
    QString said;
    QTimer timer;
    timer.callOnTimeout([&said, button] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) return;
        if (!said.isEmpty()) said += u'\n';
        said += box->windowTitle() + QStringLiteral(": ") + box->text();
        for (QAbstractButton* offered : box->buttons())
            if (offered->text() == QLatin1String(button)) return offered->click();
        box->close();
    });
    timer.start(1);
    act();
    return said.toStdString();
}

void WindowTest::await_operations() {
    const auto wait = [] { EXPECT_TRUE(QTest::qWaitFor([] { return n_slots == 0; }, 20000)); };
    EXPECT_EQ(alerts_of(wait), "");
}

bool WindowTest::is_open(const char* dialog) {
    const QWidget* window = qt(w_instance(dialog));
    return window != nullptr && window->isVisible();
}

bool WindowTest::gets_focus(const char* widget) {
    return QTest::qWaitFor([widget] {
        const QWidget* focus = qt(w_instance(widget));
        return focus != nullptr && focus == QApplication::focusWidget();
    });
}

void WindowTest::push(const char* button) {
    auto* pushed = qt_instance<QAbstractButton>(button);
    ASSERT_NE(pushed, nullptr) << button;
    QTest::mouseClick(pushed, Qt::LeftButton);
}

void WindowTest::enter(const char* field, const std::string& text) {
    const QString shown = QString::fromStdString(text);
    if (auto* combo = qt_instance<QComboBox>(field)) return combo->setEditText(shown);
    auto* line = qt_instance<QLineEdit>(field);
    ASSERT_NE(line, nullptr) << field;
    line->setText(shown);
}

void WindowTest::press_in(const char* widget, Qt::Key key) {
    ASSERT_NE(w_instance(widget), nullptr) << widget;
    QTest::keyClick(qt(w_instance(widget)), key);
}

void WindowTest::type(const char* text) {
    QTest::keyClicks(gPane.view, QString::fromUtf8(text));
}

void WindowTest::press(int key, Qt::KeyboardModifiers held) {
    QTest::keyClick(gPane.view, static_cast<Qt::Key>(key), held);
}

void WindowTest::click(const std::string& name, Qt::KeyboardModifiers held, bool twice) {
    const int row = fl_row_of(name == ".." ? -1 : index_of(name));
    ASSERT_GE(row, 0) << name;
    gPane.view->scroll_to_row(row);
    const QRect area = gPane.view->visualRect(gPane.view->model()->index(row, 0));
    const QPoint at(30, area.center().y());
    QTest::mouseClick(gPane.view->viewport(), Qt::LeftButton, held, at);
    if (twice) QTest::mouseDClick(gPane.view->viewport(), Qt::LeftButton, held, at);
}

void WindowTest::select(const std::vector<std::string>& names) {
    fl_unselect_all();
    for (const std::string& name : names)
        click(name, Qt::ControlModifier);
}

}  // namespace dorn
