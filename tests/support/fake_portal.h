#pragma once

#include <atomic>
#include <condition_variable>
#include <dbus/dbus.h>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace KAV::Tests {

/// A message bus of the test's own, which the session seems to have. Linux only.
class CPrivateSession final {
public:
    CPrivateSession();
    ~CPrivateSession();
    CPrivateSession(const CPrivateSession&) = delete;
    CPrivateSession& operator=(const CPrivateSession&) = delete;

    /// Whether this system has the program.
    static bool IsInstalled();
    const std::string& Address() const noexcept { return _address; }
    void End();  ///< kills it
    void Stop(); ///< it answers nothing any more

private:
    std::string _address;
    pid_t _daemon = -1;
};

/// How a desktop portal answers.
struct SPortalManners {
    bool hasFiles = true; ///< has dialogs for files
    bool answersVersion = true;
    bool answersQuestion = true;
    bool answersEarly = false; ///< before it has said what the question is called
    std::string otherHandle;   ///< what the question is called; empty: as the asker expects
    /// Writes the arguments of the response; null: the user takes the time.
    std::function<void(DBusMessage& response)> respond;
};

/// A desktop portal on that bus, as far as the dialogs for files need one.
class CFakePortal final {
public:
    CFakePortal(const CPrivateSession& session, SPortalManners manners);
    ~CFakePortal();
    CFakePortal(const CFakePortal&) = delete;
    CFakePortal& operator=(const CFakePortal&) = delete;

    /// Waits for the next call of a portal's function, and returns it as "function arguments".
    std::string NextCall();
    /// The path of the last question, once it has been asked.
    std::string Handle();
    /// The unique name of the last asker.
    std::string Asker();

private:
    void Run();
    void Handle(DBusMessage& call);
    void Ask(DBusMessage& call);
    void Respond(const std::string& handle, const char* asker);
    void Note(const std::string& call);

    SPortalManners _manners;
    DBusConnection* _connection;
    std::atomic<bool> _ends{false};
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<std::string> _calls; // under the lock, as is what follows
    std::string _handle;
    std::string _asker;
    std::thread _thread; // last: it uses all of the above
};

/// A response of that code with these addresses.
std::function<void(DBusMessage& response)> ChosenAddresses(unsigned code, std::vector<std::string> addresses);

/// Sends a response to a question of another's, as any program of the session can.
void ForgeResponse(const CPrivateSession& session, const std::string& handle, const std::string& asker,
    const std::string& address);

} // namespace KAV::Tests
