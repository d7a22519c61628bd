#include "device/DeviceGlobals.h"

UsbTransport *gUsb = nullptr;
DevBase *gDev = nullptr;
DevInit *gDevInit = nullptr;
