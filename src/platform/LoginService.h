#pragma once

namespace velmora {

// The program's own quit exits with this status, so that the service stays down.
inline constexpr int kQuitExitStatus = 64;

// The per-user service that starts the program after login and brings it back
// when it is killed.
class LoginService
{
public:
    virtual ~LoginService() = default;
    // Writes the service description, replacing an older one.
    virtual bool install() = 0;
    virtual void enable() = 0;
    virtual void disable() = 0;
};

} // namespace velmora
