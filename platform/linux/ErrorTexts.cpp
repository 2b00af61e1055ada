#include "platform/ErrorTexts.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

struct SErrorText {
    std::uint32_t code;
    std::string_view text;
};

// The texts of the Windows message table, in ascending order of their codes.
constexpr auto kErrorTexts = std::to_array<SErrorText>({
    {1, "Incorrect function."},
    {2, "The system cannot find the file specified."},
    {3, "The system cannot find the path specified."},
    {4, "The system cannot open the file."},
    {5, "Access is denied."},
    {6, "The handle is invalid."},
    {8, "Not enough memory resources are available to process this command."},
    {13, "The data is invalid."},
    {14, "Not enough memory resources are available to complete this operation."},
    {19, "The media is write protected."},
    {20, "The system cannot find the device specified."},
    {21, "The device is not ready."},
    {22, "The device does not recognize the command."},
    {23, "Data error (cyclic redundancy check)."},
    {24, "The program issued a command but the command length is incorrect."},
    {29, "The system cannot write to the specified device."},
    {30, "The system cannot read from the specified device."},
    {31, "A device attached to the system is not functioning."},
    {32, "The process cannot access the file because it is being used by another process."},
    {33, "The process cannot access the file because another process has locked a portion of the file."},
    {38, "Reached the end of the file."},
    {39, "The disk is full."},
    {50, "The request is not supported."},
    {53, "The network path was not found."},
    {55, "The specified network resource or device is no longer available."},
    {59, "An unexpected network error occurred."},
    {64, "The specified network name is no longer available."},
    {87, "The parameter is incorrect."},
    {109, "The pipe has been ended."},
    {110, "The system cannot open the device or file specified."},
    {112, "There is not enough space on the disk."},
    {121, "The semaphore timeout period has expired."},
    {122, "The data area passed to a system call is too small."},
    {123, "The filename, directory name, or volume label syntax is incorrect."},
    {170, "The requested resource is in use."},
    {183, "Cannot create a file when that file already exists."},
    {206, "The filename or extension is too long."},
    {258, "The wait operation timed out."},
    {995, "The I/O operation has been aborted because of either a thread exit or an application request."},
    {996, "Overlapped I/O event is not in a signaled state."},
    {997, "Overlapped I/O operation is in progress."},
    {1117, "The request could not be performed because of an I/O device error."},
    {1118, "No serial device was successfully initialized. The serial driver will unload."},
    {1167, "The device is not connected."},
    {1168, "Element not found."},
    {1223, "The operation was canceled by the user."},
    {1225, "The remote computer refused the network connection."},
    {1226, "The network connection was gracefully closed."},
    {1229, "An operation was attempted on a nonexistent network connection."},
    {1236, "The network connection was aborted by the local system."},
    {1460, "This operation returned because the timeout period expired."},
    {10004, "A blocking operation was interrupted by a call to WSACancelBlockingCall."},
    {10009, "The file handle supplied is not valid."},
    {10013, "An attempt was made to access a socket in a way forbidden by its access permissions."},
    {10014,
     "The system detected an invalid pointer address in attempting to use a pointer argument in a call."},
    {10022, "An invalid argument was supplied."},
    {10024, "Too many open sockets."},
    {10035, "A non-blocking socket operation could not be completed immediately."},
    {10036, "A blocking operation is currently executing."},
    {10037, "An operation was attempted on a non-blocking socket that already had an operation in progress."},
    {10038, "An operation was attempted on something that is not a socket."},
    {10039, "A required address was omitted from an operation on a socket."},
    {10040,
     "A message sent on a datagram socket was larger than the internal message buffer or some other network "
     "limit, or the buffer used to receive a datagram into was smaller than the datagram itself."},
    {10041,
     "A protocol was specified in the socket function call that does not support the semantics of the socket "
     "type requested."},
    {10042,
     "An unknown, invalid, or unsupported option or level was specified in a getsockopt or setsockopt call."},
    {10043,
     "The requested protocol has not been configured into the system, or no implementation for it exists."},
    {10044, "The support for the specified socket type does not exist in this address family."},
    {10045, "The attempted operation is not supported for the type of object referenced."},
    {10046,
     "The protocol family has not been configured into the system or no implementation for it exists."},
    {10047, "An address incompatible with the requested protocol was used."},
    {10048, "Only one usage of each socket address (protocol/network address/port) is normally permitted."},
    {10049, "The requested address is not valid in its context."},
    {10050, "A socket operation encountered a dead network."},
    {10051, "A socket operation was attempted to an unreachable network."},
    {10052,
     "The connection has been broken due to keep-alive activity detecting a failure while the operation was "
     "in progress."},
    {10053, "An established connection was aborted by the software in your host machine."},
    {10054, "An existing connection was forcibly closed by the remote host."},
    {10055,
     "An operation on a socket could not be performed because the system lacked sufficient buffer space or "
     "because a queue was full."},
    {10056, "A connect request was made on an already connected socket."},
    {10057,
     "A request to send or receive data was disallowed because the socket is not connected and (when sending "
     "on a datagram socket using a sendto call) no address was supplied."},
    {10058,
     "A request to send or receive data was disallowed because the socket had already been shut down in that "
     "direction with a previous shutdown call."},
    {10059, "Too many references to some kernel object."},
    {10060,
     "A connection attempt failed because the connected party did not properly respond after a period of "
     "time, or established connection failed because connected host has failed to respond."},
    {10061, "No connection could be made because the target machine actively refused it."},
    {10062, "Cannot translate name."},
    {10063, "Name component or name was too long."},
    {10064, "A socket operation failed because the destination host was down."},
    {10065, "A socket operation was attempted to an unreachable host."},
    {10066, "Cannot remove a directory that is not empty."},
    {10067,
     "A Windows Sockets implementation may have a limit on the number of applications that may use it "
     "simultaneously."},
    {10068, "Ran out of quota."},
    {10069, "Ran out of disk quota."},
    {10070, "File handle reference is no longer available."},
    {10071, "Item is not available locally."},
    {10091,
     "WSAStartup cannot function at this time because the underlying system it uses to provide network "
     "services is currently unavailable."},
    {10092, "The Windows Sockets version requested is not supported."},
    {10093, "Either the application has not called WSAStartup, or WSAStartup failed."},
    {10101,
     "Returned by WSARecv or WSARecvFrom to indicate the remote party has initiated a graceful shutdown "
     "sequence."},
    {10102, "No more results can be returned by WSALookupServiceNext."},
    {10103,
     "A call to WSALookupServiceEnd was made while this call was still processing. The call has been "
     "canceled."},
    {10104, "The procedure call table is invalid."},
    {10105, "The requested service provider is invalid."},
    {10106, "The requested service provider could not be loaded or initialized."},
    {10107, "A system call has failed."},
    {10108, "No such service is known. The service cannot be found in the specified name space."},
    {10109, "The specified class was not found."},
    {10110, "No more results can be returned by WSALookupServiceNext."},
    {10111,
     "A call to WSALookupServiceEnd was made while this call was still processing. The call has been "
     "canceled."},
    {10112, "A database query failed because it was actively refused."},
    {11001, "No such host is known."},
    {11002,
     "This is usually a temporary error during hostname resolution and means that the local server did not "
     "receive a response from an authoritative server."},
    {11003, "A non-recoverable error occurred during a database lookup."},
    {11004, "The requested name is valid, but no data of the requested type was found."},
});

static_assert(std::is_sorted(kErrorTexts.begin(), kErrorTexts.end(),
                             [](const SErrorText& a, const SErrorText& b) { return a.code < b.code; }));

}  // namespace

std::string GetSystemErrorText(std::uint32_t code) {
    if (code == 0) {
        return "No error";
    }
    const auto found =
        std::lower_bound(kErrorTexts.begin(), kErrorTexts.end(), code,
                         [](const SErrorText& entry, std::uint32_t wanted) { return entry.code < wanted; });
    if (found == kErrorTexts.end() || found->code != code) {
        return "Failed to get error description (Code: " + std::to_string(code) + ")";
    }
    return std::string(found->text) + "\r\n";
}

// Both kinds of numbers share one table.
std::string GetSocketErrorText(std::uint32_t code) {
    return GetSystemErrorText(code);
}
