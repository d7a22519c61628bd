#pragma once

#include "device/BringUpRun.h"
#include "device/UsbTransport.h"
#include "support/FakeUsb.h"

#include <QByteArray>
#include <QVector>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

/// A control transfer as the device saw it.
struct SeenRequest {
    UsbSetup setup;
    QByteArray data; ///< that was sent to it
    bool operator==(const SeenRequest &) const = default;
};

/// How one of the transfers goes wrong.
enum class Trouble { None, NotOpen, Failed, Short, Unplugged };

/// A device that takes every request, or answers by a script, and in which one transfer can go wrong. Transfers are
/// control requests and bulk writes, counted together from 0. One thread.
struct RequestDesk {
    explicit RequestDesk(const FakeUsbDevice &device = FakeUsbDevice{})
    {
        auto platform = std::make_unique<FakeUsb>();
        usb = platform.get();
        usb->devices = {device};
        transport = std::make_unique<UsbTransport>(std::move(platform));
        usb->onControl = [this](const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved) {
            return control(setup, data, moved);
        };
        opened = transport->refresh() == 1;
        first = usb->operations;
    }

    /// A run over it, whose reports are collected and whose pauses are over at once.
    std::unique_ptr<BringUpRun> makeRun()
    {
        BringUpRun::Host host;
        host.report = [this](int sta, int err, int n) { reports.append({sta, err, n}); };
        host.prepareDevice = [this](int model, const QByteArray &identity) {
            connected = {model, identity};
            run->endVisit({});
        };
        host.skipPause = [this](int ms) {
            pauses.append(ms);
            return true;
        };
        auto made = std::make_unique<BringUpRun>(*transport, transport->productId.load(), std::move(host));
        run = made.get();
        return made;
    }

    /// Lets transfer `number` go wrong. NotOpen: the transport is closed by the time that it is asked for.
    void trouble(int number, Trouble kind)
    {
        troubleAt = number;
        troubleKind = kind;
        usb->failAt = 0;
        if (kind == Trouble::NotOpen && number == 0) {
            transport->close();
        } else if (kind == Trouble::Failed) {
            usb->failAt = first + number + 1;
        } else if (kind == Trouble::Short) {
            usb->failAt = first + number + 1;
            usb->failShort = true;
        } else if (kind == Trouble::Unplugged) {
            usb->unplugAt = first + number + 1;
        }
    }
    [[nodiscard]] int transfers() const { return usb->operations - first; }

    std::unique_ptr<UsbTransport> transport;
    FakeUsb *usb = nullptr;
    BringUpRun *run = nullptr;
    bool opened = false;
    std::vector<SeenRequest> seen;
    /// Fills what is asked for; null: with zeros.
    std::function<void(const UsbSetup &, QByteArray &)> answer;
    QVector<QVector<int>> reports;
    QVector<int> pauses;
    QPair<int, QByteArray> connected{0, {}};

private:
    UsbResult control(const UsbSetup &setup, std::uint8_t *data, std::uint32_t &moved)
    {
        // The operation that is under way is the one counted last.
        const int number = usb->operations - first - 1;
        SeenRequest request{setup, {}};
        moved = setup.length;
        if (setup.isIn()) {
            QByteArray bytes(setup.length, '\0');
            if (answer) {
                answer(setup, bytes);
            }
            std::copy_n(bytes.constData(), setup.length, data);
        } else {
            request.data = QByteArray(reinterpret_cast<const char *>(data), setup.length);
        }
        seen.push_back(request);
        if (troubleKind == Trouble::Short && number == troubleAt && moved > 0) {
            --moved;
        }
        if (troubleKind == Trouble::NotOpen && number + 1 == troubleAt) {
            transport->close(); // this transfer still holds on to its device
        }
        return {};
    }

    int first = 0; ///< operations before the first transfer
    int troubleAt = -1;
    Trouble troubleKind = Trouble::None;
};
