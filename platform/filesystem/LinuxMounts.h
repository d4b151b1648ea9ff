#pragma once

#include <QByteArray>
#include <QByteArrayList>

namespace vandrel {

/// The mount points that a user knows as drives of their own, in the order they were mounted: network shares,
/// folders shared by a virtual machine's host, discs, and block devices below the folders where desktops and
/// people mount them. `mountInfo` is the text of /proc/self/mountinfo, as proc(5) describes it;
/// lines that do not follow it are passed over. The mounts themselves are never touched.
QByteArrayList driveMounts(const QByteArray &mountInfo);

} // namespace vandrel
