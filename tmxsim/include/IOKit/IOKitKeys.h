#ifndef TMXSIM_IOKIT_IOKITKEYS_H
#define TMXSIM_IOKIT_IOKITKEYS_H

#define kIOServicePlane "IOService"
#define kIOProviderClassKey "IOProviderClass"
#define kIONameMatchKey "IONameMatch"
#define kIOPropertyMatchKey "IOPropertyMatch"
#define kIONameMatchedKey "IONameMatched"

#endif
