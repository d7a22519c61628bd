#pragma once

#include <QApplication>
#include <QEvent>
#include <QMenu>
#include <QPointer>
#include <QTimer>

#include <functional>

/// Works as a user in menus that run an event loop of their own, while this lives: each menu of class `Menu` is handed
/// to `act` once it is on the screen. One that is still open then is closed, so that no test waits for a person.
template<class Menu>
class MenuDriver : public QObject {
public:
    explicit MenuDriver(std::function<void(Menu &)> act) : m_act(std::move(act)) { qApp->installEventFilter(this); }

    int count = 0; ///< menus seen

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *menu = qobject_cast<Menu *>(object);
        if (menu != nullptr && menu != m_last && event->type() == QEvent::Show) {
            m_last = menu;
            ++count;
            QTimer::singleShot(0, menu, [this, menu] {
                m_act(*menu);
                QTimer::singleShot(0, menu, [menu] { menu->close(); });
            });
        }
        return false;
    }

private:
    std::function<void(Menu &)> m_act;
    QPointer<Menu> m_last; ///< a menu that comes back is not seen twice
};
