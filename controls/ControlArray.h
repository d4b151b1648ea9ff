#pragma once

#include <map>

#include <QString>
#include <QWidget>

#include "runtime/Events.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

/// Widgets that share one name and are told apart by a stated index, which need not start at 0 nor be dense.
/// The widgets belong to their parents; the array only refers to them.
template<typename Widget>
class ControlArray
{
public:
    explicit ControlArray(QString name) : m_name(std::move(name)) { }

    /// Enters `widget` under `index` and names it "<name>_<index>".
    Widget *add(int index, Widget *widget)
    {
        widget->setObjectName(m_name + QLatin1Char('_') + QString::number(index));
        m_widgets[index] = widget;
        return widget;
    }

    /// Takes the widget with that index out of the array; Subscript out of range (9) when there is none.
    Widget *remove(int index)
    {
        Widget *widget = (*this)[index];
        m_widgets.erase(index);
        return widget;
    }

    /// The widget with that index; Subscript out of range (9) when there is none.
    Widget *operator[](int index) const
    {
        const auto found = m_widgets.find(index);
        if (found == m_widgets.end())
            throw RuntimeError(error::SubscriptOutOfRange);
        return found->second;
    }

    /// Passes `signal` of every widget, with its index, to `handler` of `context`.
    template<typename Signal, typename Context>
    void onEvent(Signal signal, Context *context, void (Context::*handler)(int)) const
    {
        for (const auto &[index, widget] : m_widgets)
            vandrel::onEvent(widget, signal, context,
                             [context, handler, i = index] { (context->*handler)(i); });
    }

    auto begin() const { return m_widgets.begin(); }
    auto end() const { return m_widgets.end(); }

private:
    QString m_name;
    std::map<int, Widget *> m_widgets;
};

} // namespace vandrel
