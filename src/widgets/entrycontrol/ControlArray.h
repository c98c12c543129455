#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

namespace searchdata::detail {

/// The adapter of an array whose members the core never drives.
struct NoAdapter {
    explicit NoAdapter(QWidget*) {}
};

/// A control array: widgets of one kind named `name_index`. Member 0 is made with the array and
/// stays for its life; it is the template whose font, size and caption later members copy when
/// they are made on first use. Members start hidden. Each member carries the adapter through which
/// the core drives it; the adapter goes with its member.
template <typename Widget, typename Adapter>
class ControlArray {
public:
    using Make = std::function<Widget*(QWidget* parent)>;
    using MakeAdapter = std::function<std::unique_ptr<Adapter>(Widget*)>;

    ControlArray(QString name, QWidget* parent, Make make, MakeAdapter makeAdapter)
        : m_name(std::move(name)), m_parent(parent), m_make(std::move(make)), m_makeAdapter(std::move(makeAdapter))
    {
        item(0);
    }
    ~ControlArray()
    {
        for (std::size_t i = 0; i < m_members.size(); ++i)
            unloadMember(i);
    }
    ControlArray(const ControlArray&) = delete;
    ControlArray& operator=(const ControlArray&) = delete;

    const QString& name() const { return m_name; }
    bool isLoaded(int index) const { return index >= 0 && index < int(m_members.size()) && m_members[index].widget; }
    /// The member of `index`, made when it is not loaded yet.
    Widget* item(int index)
    {
        if (index < 0)
            return nullptr;
        if (index >= int(m_members.size()))
            m_members.resize(index + 1);
        Member& member = m_members[index];
        if (!member.widget) {
            Widget* widget = m_make(m_parent);
            widget->setObjectName(m_name + QLatin1Char('_') + QString::number(index));
            widget->hide();
            if (index > 0)
                copyDesign(m_members[0].widget, widget);
            member.widget = widget;
            member.adapter = m_makeAdapter(widget);
        }
        return member.widget;
    }
    /// The adapter of the member of `index`, made with it when needed.
    Adapter* adapter(int index) { return item(index) ? m_members[index].adapter.get() : nullptr; }
    /// The member of `index`, or null when it is not loaded.
    Widget* widget(int index) const { return isLoaded(index) ? m_members[index].widget.data() : nullptr; }
    /// The index of `widget` in this array, or -1.
    int indexOf(const QWidget* widget) const
    {
        for (std::size_t i = 0; i < m_members.size(); ++i)
            if (widget && m_members[i].widget == widget)
                return int(i);
        return -1;
    }
    /// Deletes a member made at run time; member 0 stays.
    void unload(int index)
    {
        if (index > 0 && index < int(m_members.size()))
            unloadMember(std::size_t(index));
    }
    /// Deletes every member made at run time.
    void unloadRunTimeMembers()
    {
        for (std::size_t i = 1; i < m_members.size(); ++i)
            unloadMember(i);
        m_members.resize(std::min<std::size_t>(m_members.size(), 1));
    }
    /// Calls `f(widget, adapter, index)` for each loaded member.
    template <typename F>
    void forEach(F&& f)
    {
        for (std::size_t i = 0; i < m_members.size(); ++i)
            if (m_members[i].widget)
                f(m_members[i].widget.data(), m_members[i].adapter.get(), int(i));
    }

private:
    struct Member {
        QPointer<Widget> widget;
        std::unique_ptr<Adapter> adapter;
    };

    void unloadMember(std::size_t index)
    {
        Member& member = m_members[index];
        delete member.widget.data();
        member.adapter.reset();
    }

    // What a new member takes over from member 0, as a form's loaded control copies its template.
    static void copyDesign(const Widget* from, Widget* to)
    {
        if (!from)
            return;
        to->setFont(from->font());
        to->resize(from->size());
        to->setToolTip(from->toolTip());
        if constexpr (std::is_base_of_v<QAbstractButton, Widget>)
            to->setText(from->text());
        if constexpr (std::is_base_of_v<QLabel, Widget>) {
            to->setWordWrap(from->wordWrap());
            to->setAlignment(from->alignment());
            to->setProperty("autoSize", from->property("autoSize"));
        }
    }

    QString m_name;
    QWidget* m_parent;
    Make m_make;
    MakeAdapter m_makeAdapter;
    std::vector<Member> m_members;
};

} // namespace searchdata::detail
