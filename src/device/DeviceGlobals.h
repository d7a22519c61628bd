#pragma once

class DevBase;
class DevInit;
class UsbTransport;

/// The device side as the panels reach it, without passing it along.
///
/// All are set once, in the order of start-up, on the main thread. Only `gDev` changes later, also on the main
/// thread and only while no capture runs. `main` owns what the pointers name.

/// The transport: one for the life of the process.
extern UsbTransport *gUsb;
/// The current model object; never null after start-up. Read it anew after each return to the event loop.
extern DevBase *gDev;
/// The bring-up coordinator; null in a program without instruments.
extern DevInit *gDevInit;
