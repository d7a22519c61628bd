#include "device/DevOrder.h"

DevOrder DevOrder::setThreshold(int index, double volts)
{
    DevOrder order;
    order.kind = Kind::Threshold;
    order.index = index;
    order.threshold = vthCodes(volts);
    return order;
}

DevOrder DevOrder::setPwm(int output, const PwmCounts &counts)
{
    DevOrder order;
    order.kind = Kind::Pwm;
    order.index = output;
    order.period = counts.period;
    order.high = counts.high;
    return order;
}

DevOrder DevOrder::enablePwm(bool on0, bool on1)
{
    DevOrder order;
    order.kind = Kind::PwmEnable;
    order.outputs = std::uint8_t((on0 ? 1 : 0) | (on1 ? 2 : 0));
    return order;
}

int DevOrder::send(DevControl &control) const
{
    switch (kind) {
    case Kind::Threshold:
        return control.sendVth(index, threshold);
    case Kind::Pwm:
        return control.sendPwm(index, period, high);
    case Kind::PwmEnable:
        return control.sendPwmEnable(outputs);
    }
    return DevControl::done;
}

int sendOrders(DevControl &control, const std::vector<DevOrder> &orders, const std::function<bool()> &goesOn)
{
    for (const DevOrder &order : orders) {
        if (!goesOn()) {
            return DevControl::notOpen;
        }
        const unsigned before = control.timeOuts();
        if (const int result = order.send(control); result == DevControl::notOpen) {
            return result;
        }
        if (control.timeOuts() != before) {
            return DevControl::transferFailed;
        }
    }
    return DevControl::done;
}
