// The windows of the host layer: the locked message and the about box.

#include "host/frmAbout.h"
#include "host/frmLockedMessage.h"
#include "screenshots/Scenes.h"
#include "searchdata/LockedMessage.h"
#include "searchdata/Resources.h"

namespace searchdata::shots {

namespace {

SD_SCENE("locked-message", [](SceneContext&) -> std::unique_ptr<QWidget> {
    // As a save of picklist entries shows it while another user holds the table.
    return std::make_unique<frmLockedMessage>(MakeLockedMessage(GetResourceText(8374), GetResourceText(8373)));
});

SD_SCENE("about-box", [](SceneContext&) -> std::unique_ptr<QWidget> { return std::make_unique<frmAbout>(); });

} // namespace

} // namespace searchdata::shots
