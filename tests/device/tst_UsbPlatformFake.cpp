#include "support/FakeUsbFace.h"
#include "support/UsbPlatformContract.h"

#include <QtTest>

namespace {

/// The scripted bus that the other tests use: what they rely on is what every platform does.
class FakeFace final : public FakeUsbFace {
public:
    std::unique_ptr<UsbPlatform> makePlatform() override
    {
        auto made = std::make_unique<FakeUsb>();
        take(*made);
        return made;
    }
};

} // namespace

class TstUsbPlatformFake final : public UsbPlatformContract {
    Q_OBJECT
    std::unique_ptr<UsbFace> makeFace() override { return std::make_unique<FakeFace>(); }
};

QTEST_GUILESS_MAIN(TstUsbPlatformFake)
#include "tst_UsbPlatformFake.moc"
