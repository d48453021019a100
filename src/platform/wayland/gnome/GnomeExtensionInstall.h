#pragma once

#include <QString>

namespace velmora {

// Velmora's GNOME Shell extension as the program carries it: one form for GNOME
// 43 and 44, one for 45 and later, each with its metadata.
class GnomeExtensionInstall
{
public:
    static constexpr const char* kUuid = "velmora@velmora";

    // The version the program carries.
    static int carriedVersion();
    // The version of the extension in `folder` (its metadata.json), 0 when there is
    // none or it cannot be read, -1 when it does not serve `shellMajor`.
    static int installedVersion(const QString& folder, int shellMajor);
    // Writes the form for `shellMajor` into `folder` when what is there is missing,
    // older or of the other form. Answers whether it wrote; each file is replaced
    // whole or not at all.
    static bool installIfOlder(const QString& folder, int shellMajor, QString* error);
    // Adds the extension to org.gnome.shell enabled-extensions (and takes it off
    // disabled-extensions); false when that schema is not installed.
    static bool enable(QString* error);
    // The major version in GNOME Shell's own version text ("43.9" is 43), 0 when none.
    static int majorOf(const QString& shellVersion);
};

} // namespace velmora
