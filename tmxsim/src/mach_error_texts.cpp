// The kernel result texts of the phone's build.

#include "mach_error_texts.h"

namespace tmxsim {

constexpr char unknown_error_code[] = "unknown error code";

namespace {

constexpr const char* os_kern[] = {
    "(os/kern) successful",
    "(os/kern) invalid address",
    "(os/kern) protection failure",
    "(os/kern) no space available",
    "(os/kern) invalid argument",
    "(os/kern) failure",
    "(os/kern) resource shortage",
    "(os/kern) not receiver",
    "(os/kern) no access",
    "(os/kern) memory failure",
    "(os/kern) memory error",
    "(os/kern) already in set",
    "(os/kern) not in set",
    "(os/kern) name exists",
    "(os/kern) aborted",
    "(os/kern) invalid name",
    "(os/kern) invalid task",
    "(os/kern) invalid right",
    "(os/kern) invalid value",
    "(os/kern) urefs overflow",
    "(os/kern) invalid capability",
    "(os/kern) right exists",
    "(os/kern) invalid host",
    "(os/kern) memory present",
    "(os/kern) memory data moved",
    "(os/kern) memory restart copy",
    "(os/kern) invalid processor set",
    "(os/kern) policy limit",
    "(os/kern) invalid policy",
    "(os/kern) invalid object",
    "(os/kern) already waiting",
    "(os/kern) default set",
    "(os/kern) exception protected",
    "(os/kern) invalid ledger",
    "(os/kern) invalid memory control",
    "(os/kern) invalid security",
    "(os/kern) not depressed",
    "(os/kern) object terminated",
    "(os/kern) lock set destroyed",
    "(os/kern) lock unstable",
    "(os/kern) lock owned by another",
    "(os/kern) lock owned by self",
    "(os/kern) semaphore destroyed",
    "(os/kern) RPC terminated",
    "(os/kern) terminate orphan",
    "(os/kern) let orphan continue",
    "(os/kern) service not supported",
    "(os/kern) remote node down",
    "(os/kern) thread not waiting",
    "(os/kern) operation timed out",
    "(os/kern) code signing error",
    "(os/kern) policy is static",
    "(os/kern) insufficient input buffer size",
    "(os/kern) denied by security policy",
    "(os/kern) missing kernel collection",
    "(os/kern) invalid kernel collection",
    "(os/kern) result not found",
};

constexpr const char* os_unix[] = {
    unknown_error_code,
    "(os/unix) no rights to object",
    "(os/unix) file or directory does not exist",
    "(os/unix) no such process",
    "(os/unix) interrupted system call",
    "(os/unix) i/o error",
    "(os/unix) device does not exist",
    "(os/unix) argument list is too long",
    "(os/unix) invalid executable object format",
    "(os/unix) bad file descriptor number",
    "(os/unix) no child processes are present",
    "(os/unix) no more processes are available",
    "(os/unix) insufficient memory",
    "(os/unix) access denied",
    "(os/unix) memory access fault",
    "(os/unix) block device required for operation",
    "(os/unix) mount device busy",
    "(os/unix) file already exists",
    "(os/unix) cross device link",
    "(os/unix) device does not exist",
    "(os/unix) object is not a directory",
    "(os/unix) object is a directory",
    "(os/unix) invalid argument",
    "(os/unix) internal file table overflow",
    "(os/unix) maximum number of open files reached",
    "(os/unix) object is not a tty-like device",
    "(os/unix) executable object is in use",
    "(os/unix) file is too large",
    "(os/unix) no space is left on device",
    "(os/unix) illegal seek attempt",
    "(os/unix) read-only file system",
    "(os/unix) too many links",
    "(os/unix) broken pipe",
    "(os/unix) argument is too large",
    "(os/unix) result is out of range",
    "(os/unix) operation on device would block",
    "(os/unix) operation is now in progress",
    "(os/unix) operation is already in progress",
    "(os/unix) socket operation attempted on non-socket object",
    "(os/unix) destination address is required",
    "(os/unix) message is too long",
    "(os/unix) protocol type is incorrect for socket",
    "(os/unix) protocol type is not availaible",
    "(os/unix) protocol type is not supported",
    "(os/unix) socket type is not supported",
    "(os/unix) operation is not supported on sockets",
    "(os/unix) protocol family is not supported",
    "(os/unix) address family is not supported by protocol family",
    "(os/unix) address is already in use",
    "(os/unix) can't assign requested address",
    "(os/unix) network is down",
    "(os/unix) network is unreachable",
    "(os/unix) network dropped connection on reset",
    "(os/unix) software aborted connection",
    "(os/unix) connection reset by peer",
    "(os/unix) no buffer space is available",
    "(os/unix) socket is already connected",
    "(os/unix) socket is not connected",
    "(os/unix) can't send after socket shutdown",
    "(os/unix) too many references; can't splice",
    "(os/unix) connection timed out",
    "(os/unix) connection was refused",
    "(os/unix) too many levels of symbolic links",
    "(os/unix) file name exceeds system maximum limit",
    "(os/unix) host is down",
    "(os/unix) there is no route to host",
    "(os/unix) directory is not empty",
    "(os/unix) quota on number of processes exceeded",
    "(os/unix) quota on number of users exceeded",
    "(os/unix) quota on available disk space exceeded",
};

constexpr const char* server_netname[] = {
    "(server/netname) name is not yours",
    "(server/netname) name not checked in",
    "(server/netname) no such host",
    "(server/netname) host not found",
};

constexpr const char* server_env_mgr[] = {
    unknown_error_code,
    "(server/env_mgr) variable not found",
    "(server/env_mgr) wrong type of variable",
    "(server/env_mgr) unknown port",
    "(server/env_mgr) read only environment",
    "(server/env_mgr) no more connections available",
    "(server/env_mgr) port table full",
    "(server/env_mgr) attempting to enter a null port ",
};

constexpr const char* server_execd[] = {
    unknown_error_code,
    "(server/execd) could not find file to run",
    "(server/execd) userid or password incorrect",
    "(server/execd) fork failed",
};

constexpr const char* server_netmemory[] = {
    "(server/netmemory) successful",
    "(server/netmemory) invalid argument",
    "(server/netmemory) resource shortage",
};

constexpr const char* server_task_master[] = {
    "(server/task_master) GENERIC ERROR",
    "(server/task_master) invalid tm_task port",
    "(server/task_master) invalid task id",
    "(server/task_master) invalid kernel port",
    "(server/task_master) invalid job group",
    "(server/task_master) invalid action",
};

constexpr const char* server_ns[] = {
    "(server/ns) GENERIC ERROR",
    "(server/ns) invalid handle",
    "(server/ns) name not found",
    "(server/ns) name already exists",
    "(server/ns) name too long",
    "(server/ns) path too long",
    "(server/ns) invalid name",
    "(server/ns) not a directory",
    "(server/ns) is a directory",
    "(server/ns) directory not empty",
    "(server/ns) infinite retry loop in resolver",
    "(server/ns) infinite forwarding loop in resolver",
    "(server/ns) invalid prefix",
    "(server/ns) prefix table overflow",
    "(server/ns) bad format for directory",
    "(server/ns) unknown entry type",
    "(server/ns) invalid generation",
    "(server/ns) entry not reserved",
};

constexpr const char* server_io[] = {
    "(server/io) GENERIC ERROR",
    "(server/io) invalid offset",
    "(server/io) invalid size",
    "(server/io) invalid mode",
    "(server/io) invalid strategy",
    "(server/io) operation rejected under current I/O strategy",
};

constexpr const char* server_auth[] = {
    "(server/auth) GENERIC ERROR",
    "(server/auth) bad private port",
    "(server/auth) bad name",
    "(server/auth) not primary",
    "(server/auth) bad pauthsword",
    "(server/auth) bad group",
    "(server/auth) duplicate id",
    "(server/auth) duplicate name",
    "(server/auth) not secondary",
};

constexpr const char* server_us[] = {
    "(server/us) GENERIC ERROR",
    "(server/us) unknown error",
    "(server/us) object not found",
    "(server/us) object exists",
    "(server/us) object busy",
    "(server/us) object not started",
    "(server/us) object dead",
    "(server/us) invalid args",
    "(server/us) invalid access",
    "(server/us) invalid format",
    "(server/us) invalid buffer size",
    "(server/us) access denied",
    "(server/us) resource exhausted",
    "(server/us) quota exceeded",
    "(server/us) limit exceeded",
    "(server/us) not implemented",
    "(server/us) not supported",
    "(server/us) hardware error",
    "(server/us) retry required",
    "(server/us) not authenticated",
    "(server/us) exclusive access",
    "(server/us) timeout",
    "(server/us) bad reference count",
    "(server/us) internal error",
};

constexpr const char* server_sunrpc[] = {
    "(server/sunrpc) GENERIC ERROR",
    "(server/sunrpc) cannot encode arguments",
    "(server/sunrpc) cannot decode results",
    "(server/sunrpc) failure in sending call",
    "(server/sunrpc) failure in receiving result",
    "(server/sunrpc) call timed out",
    "(server/sunrpc) rpc versions not compatible",
    "(server/sunrpc) authentication error",
    "(server/sunrpc) program not available",
    "(server/sunrpc) program version mismatched",
    "(server/sunrpc) procedure unavailable",
    "(server/sunrpc) decode arguments error",
    "(server/sunrpc) generic other problem",
    "(server/sunrpc) unknown host name",
    "(server/sunrpc) portmapper failed",
    "(server/sunrpc) remote program not registered",
    "(server/sunrpc) unspecified error",
    "(server/sunrpc) unknown protocol",
};

constexpr const char* server_object_system[] = {
    "(server/object system) GENERIC ERROR",
    "(server/object system) object not found",
    "(server/object system) no such operation",
    "(server/object system) undefined ipc method arguments",
    "(server/object system) too many arguments to method",
    "(server/object system) bad ipc message format",
};

constexpr const char* server_loader[] = {
    "(server/loader) GENERIC ERROR",
    "(server/loader) object file not relocated",
    "(server/loader) unknown file type",
    "(server/loader) symbol not found",
    "(server/loader) symbol multiply defined",
    "(server/loader) memory region overlap",
};

constexpr const char* server_exception[] = {
    "(server/exception) GENERIC ERROR",
    "(server/exception) invalid access",
    "(server/exception) invalid instruction",
    "(server/exception) arithmetic exception",
    "(server/exception) emulation exception",
    "(server/exception) software exception",
    "(server/exception) breakpoint exception",
};

constexpr const char* server_unix_signal[] = {
    "(server/unix-signal) GENERIC ERROR",
    "(server/unix-signal) hangup",
    "(server/unix-signal) interrupt",
    "(server/unix-signal) quit",
    "(server/unix-signal) undefined",
    "(server/unix-signal) undefined",
    "(server/unix-signal) undefined",
    "(server/unix-signal) undefined",
    "(server/unix-signal) kill",
    "(server/unix-signal) undefined",
    "(server/unix-signal) undefined",
    "(server/unix-signal) system error",
    "(server/unix-signal) pipe signal",
    "(server/unix-signal) alarm",
    "(server/unix-signal) terminate",
    "(server/unix-signal) urgent i/o",
    "(server/unix-signal) stop",
    "(server/unix-signal) terminal stop",
    "(server/unix-signal) continue",
    "(server/unix-signal) child death",
    "(server/unix-signal) tty input",
    "(server/unix-signal) tty output",
    "(server/unix-signal) i/o signal",
    "(server/unix-signal) cpu time limit exceeded",
    "(server/unix-signal) file size exceeded",
    "(server/unix-signal) virtual alarm",
    "(server/unix-signal) profile signal",
    "(server/unix-signal) window size change",
    "(server/unix-signal) user-defined signal 1",
    "(server/unix-signal) user-defined signal 2",
};

constexpr const char* server_xkernel[] = {
    "(server/xkernel) GENERIC ERROR",
    "(server/xkernel) map full",
    "(server/xkernel) inconsistent bind",
    "(server/xkernel) cannot resolve",
    "(server/xkernel) cannot unbind",
    "(server/xkernel) invalid type",
    "(server/xkernel) invalid opcode",
    "(server/xkernel) buffer too small",
    "(server/xkernel) invalid ev code",
    "(server/xkernel) event not registered",
    "(server/xkernel) invalid open",
    "(server/xkernel) already open",
    "(server/xkernel) bad addr",
};

constexpr const char* old_ipc_send[] = {
    "(ipc/send) unknown error",
    "(ipc/send) invalid memory",
    "(ipc/send) invalid port",
    "(ipc/send) timed out",
    "(ipc/send) unused error",
    "(ipc/send) will notify",
    "(ipc/send) notify in progress",
    "(ipc/send) kernel refused message",
    "(ipc/send) send interrupted",
    "(ipc/send) send message too large",
    "(ipc/send) send message too small",
    "(ipc/send) message size changed while being copied",
};

constexpr const char* old_ipc_rcv[] = {
    "(ipc/rcv) unknown error",
    "(ipc/rcv) invalid memory",
    "(ipc/rcv) invalid port",
    "(ipc/rcv) receive timed out",
    "(ipc/rcv) message too large",
    "(ipc/rcv) no space for message data",
    "(ipc/rcv) only sender remaining",
    "(ipc/rcv) receive interrupted",
    "(ipc/rcv) port receiver changed or port became enabled",
};

constexpr const char* old_ipc_mig[] = {
    "(ipc/mig) type check failure in message interface",
    "(ipc/mig) wrong return message ID",
    "(ipc/mig) server detected error",
    "(ipc/mig) bad message ID",
    "(ipc/mig) server found wrong arguments",
    "(ipc/mig) no reply should be sent",
    "(ipc/mig) server raised exception",
    "(ipc/mig) user specified array not large enough for return info",
};

constexpr const char* ipc_send[] = {
    "(ipc/send) no error",
    "(ipc/send) send in progress",
    "(ipc/send) invalid data",
    "(ipc/send) invalid destination port",
    "(ipc/send) timed out",
    "(ipc/send) invalid voucher",
    "(ipc/send) unused error",
    "(ipc/send) interrupted",
    "(ipc/send) msg too small",
    "(ipc/send) invalid reply port",
    "(ipc/send) invalid port right",
    "(ipc/send) invalid notify port",
    "(ipc/send) invalid memory",
    "(ipc/send) no msg buffer",
    "(ipc/send) msg too large",
    "(ipc/send) invalid msg-type",
    "(ipc/send) invalid msg-header",
    "(ipc/send) invalid msg-trailer",
    "(ipc/send) invalid context for reply",
    "(ipc/send) unused error",
    "(ipc/send) unused error",
    "(ipc/send) out-of-line buffer too large",
    "(ipc/send) destination does not accept OOL ports",
};

constexpr const char* ipc_rcv[] = {
    "(ipc/rcv) no error",
    "(ipc/rcv) receive in progress",
    "(ipc/rcv) invalid name",
    "(ipc/rcv) timed out",
    "(ipc/rcv) msg too large",
    "(ipc/rcv) interrupted",
    "(ipc/rcv) port changed",
    "(ipc/rcv) invalid notify port",
    "(ipc/rcv) invalid data",
    "(ipc/rcv) port died",
    "(ipc/rcv) port in set",
    "(ipc/rcv) header error",
    "(ipc/rcv) body error",
    "(ipc/rcv) invalid scatter list entry",
    "(ipc/rcv) overwrite region too small",
    "(ipc/rcv) invalid msg-trailer",
    "(ipc/rcv) DIPC transport error",
};

constexpr const char* ipc_mig[] = {
    "(ipc/mig) client type check failure",
    "(ipc/mig) wrong reply message ID",
    "(ipc/mig) server detected error",
    "(ipc/mig) bad request message ID",
    "(ipc/mig) server type check failure",
    "(ipc/mig) no reply should be sent",
    "(ipc/mig) server raised exception",
    "(ipc/mig) array not large enough",
    "(ipc/mig) server died",
    "(ipc/mig) unknown trailer format",
};

constexpr const char* vm_reclaim[] = {
    "(vm/reclaim) no error",
    "(vm/reclaim) invalid argument",
    "(vm/reclaim) operation not supported",
    "(vm/reclaim) invalid region size",
    "(vm/reclaim) invalid ring capacity",
    "(vm/reclaim) invalid reclaim ID",
    "(vm/reclaim) ring already instantiated",
    "(vm/reclaim) invalid ring",
};

constexpr const char* libkern_common[] = {
    unknown_error_code,
    "(libkern/common) general/unspecified error",
};

constexpr const char* libkern_metaclass[] = {
    unknown_error_code,
    "(libkern/metaclass) runtime internal error",
    "(libkern/metaclass) class has instances",
    "(libkern/metaclass) OSMetaClass::preModLoad() not called, runtime internal error",
    "(libkern/metaclass) allocation failure, internal data",
    "(libkern/metaclass) allocation failure, class tracking dictionaries",
    "(libkern/metaclass) allocation failure, no kext/class set",
    "(libkern/metaclass) failed to insert class into class dictionary",
    "(libkern/metaclass) can't associate class with its superclass",
    "(libkern/metaclass) can't find superclass during instance creation",
    "(libkern/metaclass) duplicate class name encountered",
    "(libkern/metaclass) no kext for metaclass",
};

constexpr const char* libkern_kext[] = {
    unknown_error_code,
    "(libkern/kext) internal error",
    "(libkern/kext) allocation failure",
    "(libkern/kext) resource shortage",
    "(libkern/kext) not privileged",
    "(libkern/kext) invalid argument",
    "(libkern/kext) not found",
    "(libkern/kext) bad data (mkext/other)",
    "(libkern/kext) XML (un)serialization error",
    "(libkern/kext) function/version unsupported",
    "(libkern/kext) function disabled",
    "(libkern/kext) malformed kext (bundle layout/missing plist)",
    "(libkern/kext) validation failure (plist/executable)",
    "(libkern/kext) authentication failure (file ownership/permissions)",
    "(libkern/kext) dependency resolution failure",
    "(libkern/kext) requested architecture/executable not found",
    "(libkern/kext) cache error",
    "(libkern/kext) operation deferred (queued to user space)",
    "(libkern/kext) operation/kext not allowed at current boot level",
    "(libkern/kext) not loadable (reason unspecified)",
    "(libkern/kext) different version/uuid already loaded",
    "(libkern/kext) dependency load failed",
    "(libkern/kext) link error",
    "(libkern/kext) kext (kmod) start/stop routine failed",
    "(libkern/kext) kext is in use or retained (cannot unload)",
    "(libkern/kext) kext request timed out",
    "(libkern/kext) kext is stopping and cannot issue requests",
    "(libkern/kext) system policy prevents loading",
    "(libkern/kext) loading/mapping of a kext collection failed",
    "(libkern/kext) mapping of the SystemKC failed",
    "(libkern/kext) loading/mapping of the AuxiliaryKC failed",
    "(libkern/kext) loading of both Auxiliary and System KCs failed",
};

// Packed: entry 0 is code 0x001, entries 1 to 53 are codes 0x2bc to 0x2f0.
constexpr const char* iokit_common[] = {
    "(iokit/common) invalid - should never be seen",
    "(iokit/common) general error",
    "(iokit/common) can't allocate memory",
    "(iokit/common) resource shortage",
    "(iokit/common) error during IPC",
    "(iokit/common) no such device",
    "(iokit/common) privilege violation",
    "(iokit/common) invalid argument",
    "(iokit/common) device read locked",
    "(iokit/common) device write locked",
    "(iokit/common) exclusive access and device already open",
    "(iokit/common) sent/received messages had different msg_id",
    "(iokit/common) unsupported function",
    "(iokit/common) misc. VM failure",
    "(iokit/common) internal error",
    "(iokit/common) General I/O error",
    "(iokit/common) ???",
    "(iokit/common) can't acquire lock",
    "(iokit/common) device not open",
    "(iokit/common) read not supported",
    "(iokit/common) write not supported",
    "(iokit/common) alignment error",
    "(iokit/common) Media Error",
    "(iokit/common) device(s) still open",
    "(iokit/common) rld failure",
    "(iokit/common) DMA failure",
    "(iokit/common) Device Busy",
    "(iokit/common) I/O Timeout",
    "(iokit/common) device offline",
    "(iokit/common) not ready",
    "(iokit/common) device not attached",
    "(iokit/common) no DMA channels left",
    "(iokit/common) no space for data",
    "(iokit/common) ???",
    "(iokit/common) port already exists",
    "(iokit/common) can't wire down physical memory",
    "(iokit/common) no interrupt attached",
    "(iokit/common) no DMA frames enqueued",
    "(iokit/common) oversized msg received on interrupt port",
    "(iokit/common) not permitted",
    "(iokit/common) no power to device",
    "(iokit/common) media not present",
    "(iokit/common) media not formatted",
    "(iokit/common) no such mode",
    "(iokit/common) data underrun",
    "(iokit/common) data overrun",
    "(iokit/common) the device is not working properly!",
    "(iokit/common) a completion routine is required",
    "(iokit/common) operation aborted",
    "(iokit/common) bus bandwidth would be exceeded",
    "(iokit/common) device not responding",
    "(iokit/common) isochronous I/O request for distant past!",
    "(iokit/common) isochronous I/O request for distant future",
    "(iokit/common) data was not found",
};

constexpr error_code_texts no_texts{};

constexpr error_code_texts operating_system[] = {os_kern, no_texts, no_texts, os_unix};

constexpr error_code_texts user_space[] = {no_texts};

// Slot 4, ufs, has no texts.
constexpr error_code_texts server[] = {
    server_netname, server_env_mgr,     server_execd,       server_netmemory,
    no_texts,       server_task_master, server_ns,          server_io,
    server_auth,    server_us,          server_sunrpc,      server_object_system,
    server_loader,  server_exception,   server_unix_signal, server_xkernel,
};

constexpr error_code_texts old_ipc[] = {old_ipc_send, old_ipc_rcv, old_ipc_mig};

constexpr error_code_texts mach_msg_ipc[] = {ipc_send, ipc_rcv, ipc_mig};

// vm/kernel has no texts of its own: it reuses the start of mach_msg send's.
constexpr error_code_texts vm[] = {error_code_texts(ipc_send).first(2), vm_reclaim};

constexpr error_code_texts libkern[] = {libkern_common, libkern_metaclass, libkern_kext};

// The phone's build has nine iokit slots; the three bus families that other
// builds carry are left out, and none of the remaining eight has texts.
constexpr error_code_texts iokit[] = {iokit_common, no_texts, no_texts, no_texts, no_texts,
                                      no_texts,     no_texts, no_texts, no_texts};

constexpr std::array<error_system, 64> populated_systems() {
  std::array<error_system, 64> systems{};
  systems[0x00] = {"(operating system/?) unknown subsystem error", operating_system};
  systems[0x01] = {"(user space/?) unknown subsystem error", user_space};
  systems[0x02] = {"(server/?) unknown subsystem error", server};
  systems[0x03] = {"(ipc/?) unknown subsystem error", old_ipc};
  systems[0x04] = {"(ipc/?) unknown subsystem error", mach_msg_ipc};
  systems[0x07] = {"(vm/?) unknown subsystem error", vm};
  systems[0x37] = {"(libkern/?) unknown subsystem error", libkern};
  systems[0x38] = {"(iokit/?) unknown subsystem error", iokit};
  return systems;
}

}  // namespace

constexpr std::array<error_system, 64> error_systems = populated_systems();

}  // namespace tmxsim
