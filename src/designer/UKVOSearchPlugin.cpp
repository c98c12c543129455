#include "UKVOSearchPlugin.h"

#include "searchdata/Resources.h"
#include "searchdata/widgets/UKVOSearch.h"

#include <QIcon>

namespace searchdata {

QString UKVOSearchPlugin::name() const
{
    return QStringLiteral("searchdata::UKVOSearch");
}

QString UKVOSearchPlugin::group() const
{
    return GetResourceText(9490);
}

QString UKVOSearchPlugin::toolTip() const
{
    return GetResourceText(9491);
}

QString UKVOSearchPlugin::whatsThis() const
{
    return GetResourceText(9492);
}

QString UKVOSearchPlugin::includeFile() const
{
    return QStringLiteral("searchdata/widgets/UKVOSearch.h");
}

QIcon UKVOSearchPlugin::icon() const
{
    // The picture the control gives a host's menu item that shows a record's search data.
    return QIcon(UKVOSearch().BitmapSmall(fltr_FMI_VIEWDATA));
}

QWidget* UKVOSearchPlugin::createWidget(QWidget* parent)
{
    return new UKVOSearch(parent);
}

QString UKVOSearchPlugin::domXml() const
{
    return QStringLiteral(R"(<ui language="c++">
 <widget class="searchdata::UKVOSearch" name="kvoSearch">
  <property name="geometry"><rect><x>0</x><y>0</y><width>400</width><height>300</height></rect></property>
 </widget>
</ui>
)");
}

} // namespace searchdata
