// The texts of kernel results.

#include <IOKit/IOReturn.h>
#include <gtest/gtest.h>
#include <mach/mach_error.h>

#include <set>
#include <string>

namespace {

TEST(mach_error, texts_of_the_results_the_tool_meets) {
  EXPECT_STREQ(mach_error_string(0), "(os/kern) successful");
  EXPECT_STREQ(mach_error_string(0x10000003), "(ipc/send) invalid destination port");
  EXPECT_STREQ(mach_error_string(kIOReturnNotFound), "(iokit/common) data was not found");
  EXPECT_STREQ(mach_error_string(kIOReturnUnsupported), "(iokit/common) unsupported function");
  EXPECT_STREQ(mach_error_string(kIOReturnBadArgument), "(iokit/common) invalid argument");
  EXPECT_STREQ(mach_error_string(kIOReturnNotReady), "(iokit/common) device is not ready");
  EXPECT_STREQ(mach_error_string(kIOReturnNotPrivileged), "(iokit/common) privilege violation");
  EXPECT_STREQ(mach_error_string(kIOReturnTimeout), "(iokit/common) I/O timeout");
  EXPECT_STREQ(mach_error_string(0x12345), "unknown error code");
  EXPECT_STREQ(mach_error_string(iokit_common_err(0x2cb)), "unknown error code");
}

TEST(mach_error, every_common_iokit_result_has_its_own_text) {
  const IOReturn declared[] = {
      kIOReturnError, kIOReturnNoMemory, kIOReturnNoResources, kIOReturnIPCError,
      kIOReturnNoDevice, kIOReturnNotPrivileged, kIOReturnBadArgument, kIOReturnLockedRead,
      kIOReturnLockedWrite, kIOReturnExclusiveAccess, kIOReturnBadMessageID,
      kIOReturnUnsupported, kIOReturnVMError, kIOReturnInternalError, kIOReturnIOError,
      kIOReturnCannotLock, kIOReturnNotOpen, kIOReturnNotReadable, kIOReturnNotWritable,
      kIOReturnNotAligned, kIOReturnBadMedia, kIOReturnStillOpen, kIOReturnRLDError,
      kIOReturnDMAError, kIOReturnBusy, kIOReturnTimeout, kIOReturnOffline,
      kIOReturnNotReady, kIOReturnNotAttached, kIOReturnNoChannels, kIOReturnNoSpace,
      kIOReturnPortExists, kIOReturnCannotWire, kIOReturnNoInterrupt, kIOReturnNoFrames,
      kIOReturnMessageTooLarge, kIOReturnNotPermitted, kIOReturnNoPower, kIOReturnNoMedia,
      kIOReturnUnformattedMedia, kIOReturnUnsupportedMode, kIOReturnUnderrun,
      kIOReturnOverrun, kIOReturnDeviceError, kIOReturnNoCompletion, kIOReturnAborted,
      kIOReturnNoBandwidth, kIOReturnNotResponding, kIOReturnIsoTooOld, kIOReturnIsoTooNew,
      kIOReturnNotFound};
  std::set<std::string> texts;
  for (const IOReturn result : declared) {
    const std::string text = mach_error_string(result);
    EXPECT_TRUE(text.starts_with("(iokit/common) ")) << std::hex << result << ": " << text;
    texts.insert(text);
  }
  EXPECT_EQ(texts.size(), std::size(declared));
}

}  // namespace
