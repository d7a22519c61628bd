#pragma once

#include "platform/InstrumentBus.h"

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <string>

/// A bus for the real libusb: instruments behind usbfs nodes of a umockdev testbed, in the process of the test, which
/// has to enter() umockdev's environment. One at a time; to be made before libusb starts and to go after it ends.
///
/// The nodes are FIFOs rather than the plain files that umockdev would make, since those always poll ready: a full FIFO
/// is a node from which nothing can be reaped. Data go straight to and from the buffers of the transfers, which are in
/// the same address space; only the orders pass through umockdev.
class UmockdevBus final : public InstrumentBus {
public:
    explicit UmockdevBus(double timeScale = 1.0);
    ~UmockdevBus() override;

    /// Starts the process anew by umockdev-wrapper unless it was started so, as nothing works without. For main().
    /// @return false if that fails
    [[nodiscard]] static bool enter(char **argv);
    /// Claims of an interface fail so many times after each arrival, as they may while a kernel sets up a device.
    /// @param each  how long each takes
    void refuseClaims(int count, std::chrono::milliseconds each = {})
    {
        m_claimsToRefuse = count;
        m_refusalTakes = each;
    }

private:
    struct Node;
    struct Glib;

    void completed(int port, const emulator::Urb &urb) override;
    void afterPump() override;
    void changed(int port, bool attached, unsigned generation) override;

    void arrive(int port, unsigned generation);
    void leave(int port);

    // Called by the testbed's thread.
    int handle(Node &node, unsigned long request, void *argument);
    void forgetClient(Node &node);
    // Under the lock.
    int submit(Node &node, void *urb);
    int discard(Node &node, void *urb);
    int reap(Node &node, void **urb);
    int clearHalt(Node &node, unsigned endpoint);
    void setReady(Node &node);
    [[nodiscard]] bool isGone(const Node &node) const;
    [[nodiscard]] Node *nodeOf(int port, std::uint64_t key);

    std::unique_ptr<Glib> m_glib;
    std::vector<std::unique_ptr<Node>> m_nodes; ///< all that there ever were
    std::uint64_t m_lastKey = 0;
    int m_lastAddress = 1;
    std::atomic<int> m_claimsToRefuse{0};
    std::atomic<std::chrono::milliseconds> m_refusalTakes{};
};
