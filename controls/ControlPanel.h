#pragma once

#include <cstdint>
#include <optional>

#include <QString>

namespace vandrel {

/// Opens the operating system's settings items. User-interface thread only; each call returns at once, and
/// the opened item is a process of its own that nobody tracks.
class ControlPanel
{
public:
    ControlPanel() = default;
    ControlPanel(const ControlPanel &) = delete;
    ControlPanel &operator=(const ControlPanel &) = delete;
    virtual ~ControlPanel() = default;

    /// The operations, by member number.
    enum class Member : std::uint32_t {
        System = 0x60030002, ///< takes an argument; 0x8000000F is passed as it stands
        AddNewHardware = 0x60030003,
        AddRemovePrograms = 0x60030004, ///< takes the zero-based tab
        RegionalSettings = 0x60030005, ///< takes the zero-based tab
        Display = 0x60030007, ///< takes the zero-based tab
        Mouse = 0x60030008,
        Printers = 0x6003000A,
        Fonts = 0x6003000B,
        Multimedia = 0x6003000C, ///< takes the zero-based tab
        Sounds = 0x6003000D,
        TimeDate = 0x6003000E,
        Modem = 0x6003000F,
        Passwords = 0x60030011,
        Internet = 0x60030012,
        AddPrinterWizard = 0x60030015,
        DialUpWizard = 0x60030018,
    };

    /// Opens the item behind `member`. `argument` selects a page or tab where the item has any. `caption` is
    /// the item's caption as the user chose it, for the notice that the running desktop has no such item.
    virtual void open(Member member, std::optional<std::int32_t> argument, const QString &caption) = 0;
};

} // namespace vandrel
