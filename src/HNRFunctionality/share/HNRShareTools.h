#pragma once
// Internal to the share client (not installed): the runners of the external
// SMB tools (mount, mount.cifs, umount.cifs, smbclient) and the translation
// of SMB status names into messages. Every runner returns false after
// setErrorMessage() and a "[function] message" log line at level 1.
//
// Nothing that could change the meaning of a tool's command line reaches a
// tool: values that cannot be passed safely are refused before anything runs.
// Passwords never appear in a log line or an error message.
#include <map>
#include <string>

#include <boost/filesystem/path.hpp>

class GenExec;

namespace HNR {

class HNRShareParams;

// Sets the error message and logs "[function] message" at error level. Once
// the caller cancelled (HNRCancellationScope), the message is "cancelled":
// whatever failed then failed because of it.
void reportError(const char* function, const std::string& message);
// Logs a failure whose message is already set, under function's name.
bool failWithCurrentMessage(const char* function);

// Time-out of every synchronous tool run, in the runner's unit (ms).
constexpr int kToolTimeout = 80000;

// SMB status name -> message; 14 entries, filled at load.
const std::map<std::string, std::string>& getSmbStatusTable();
// The table's message for a status name, or "Unknown error: " + name.
std::string getSmbStatusMessage(const std::string& statusName);
// Where shares get mounted: getTempDir() + "mnt", fixed at load; mount points
// append a number.
const std::string& getMountRoot();

// True when text can stand inside a smbclient -c script as a quoted name:
// no ';' (smbclient splits the script on it even inside quotes), no '"'
// (there is no escape for it), no line break and no NUL.
bool isSafeForSmbScript(const std::string& text);
// True when text can stand inside the -o value of mount.cifs: no ',' (it
// starts a new mount option), no line break and no NUL.
bool isSafeForMountOption(const std::string& text);

// Looks for share ("//srv/share", compared case-insensitively) in the list of
// "mount -t cifs"; on a match stores its directory in mountDir and returns
// true. No match is false without an error message. login is not used: a
// share is reused whoever mounted it.
bool isMountExist(const std::string& share, const std::string& login, std::string& mountDir);
// False (message set, logged under function) when share, login or password
// cannot stand in the command line of mount.cifs (see mountApi).
bool mountArgumentsCarried(const char* function, const std::string& share, const std::string& login,
                           const std::string& password);
// mount.cifs share mountDir -ouser=DOM/user%password. A ',' in share, login
// or password, a '%' in login, a line break or NUL is refused before running.
bool mountApi(const std::string& mountDir, const std::string& share, const std::string& login,
              const std::string& password);
// umount.cifs mountDir; share only names the share in messages.
bool unmountApi(const std::string& mountDir, const std::string& share);

// Runs the smbclient script command in the share and folder of sharePath (a
// canonical path, see createCanonized) as login ("guest" when empty).
// Without runner: runs it to completion; output receives everything it
// printed, or only the status name when the text holds an "NT_STATUS_" (a
// failure even when the exit status was 0). With runner: starts it there
// (standard-output lines reported, standard error as progress) and returns.
// Refused before running: a share path that fails isSafeForSmbScript, a login
// with '%' (smbclient splits "-U user%password" at the first one), a line
// break or NUL in login, password or command, and a command whose quoted
// names hold ';' or leave a quote open. The password is passed verbatim.
bool smbclientApi(const boost::filesystem::path& sharePath, const std::string& login, const std::string& password,
                  const std::string& command, std::string& output, GenExec* runner);
// smbclientApi on the canonized params.path with params' credentials.
bool runShareCommand(const HNRShareParams& params, const std::string& command, std::string& output,
                     GenExec* runner);

} // namespace HNR
