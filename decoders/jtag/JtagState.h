#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// The states of a test access port: IEEE 1149.1-2013, figure 6-1.
enum class JtagState : std::uint8_t {
    TestLogicReset,
    RunTestIdle,
    SelectDrScan,
    CaptureDr,
    ShiftDr,
    Exit1Dr,
    PauseDr,
    Exit2Dr,
    UpdateDr,
    SelectIrScan,
    CaptureIr,
    ShiftIr,
    Exit1Ir,
    PauseIr,
    Exit2Ir,
    UpdateIr,
};

/// The state behind a rising edge of TCK.
[[nodiscard]] constexpr JtagState nextState(JtagState state, bool tms)
{
    using enum JtagState;
    constexpr std::array<std::array<JtagState, 2>, 16> table = {{
        {RunTestIdle, TestLogicReset}, // Test-Logic-Reset
        {RunTestIdle, SelectDrScan},   // Run-Test/Idle
        {CaptureDr, SelectIrScan},     // Select-DR-Scan
        {ShiftDr, Exit1Dr},            // Capture-DR
        {ShiftDr, Exit1Dr},            // Shift-DR
        {PauseDr, UpdateDr},           // Exit1-DR
        {PauseDr, Exit2Dr},            // Pause-DR
        {ShiftDr, UpdateDr},           // Exit2-DR
        {RunTestIdle, SelectDrScan},   // Update-DR
        {CaptureIr, TestLogicReset},   // Select-IR-Scan
        {ShiftIr, Exit1Ir},            // Capture-IR
        {ShiftIr, Exit1Ir},            // Shift-IR
        {PauseIr, UpdateIr},           // Exit1-IR
        {PauseIr, Exit2Ir},            // Pause-IR
        {ShiftIr, UpdateIr},           // Exit2-IR
        {RunTestIdle, SelectDrScan},   // Update-IR
    }};
    return table[std::size_t(state)][tms ? 1 : 0];
}

/// @return the name that the standard gives it
[[nodiscard]] constexpr const char *nameOf(JtagState state)
{
    constexpr std::array<const char *, 16> names = {
        "Test-Logic-Reset", "Run-Test/Idle", "Select-DR-Scan", "Capture-DR",     "Shift-DR",   "Exit1-DR",
        "Pause-DR",         "Exit2-DR",      "Update-DR",      "Select-IR-Scan", "Capture-IR", "Shift-IR",
        "Exit1-IR",         "Pause-IR",      "Exit2-IR",       "Update-IR"};
    return names[std::size_t(state)];
}

/// @return the name in five letters or fewer: "TLR", "ShDR"
[[nodiscard]] constexpr const char *shortNameOf(JtagState state)
{
    constexpr std::array<const char *, 16> names = {"TLR",   "RTI",   "SelDR", "CapDR", "ShDR",  "Ex1DR",
                                                    "PauDR", "Ex2DR", "UpdDR", "SelIR", "CapIR", "ShIR",
                                                    "Ex1IR", "PauIR", "Ex2IR", "UpdIR"};
    return names[std::size_t(state)];
}

[[nodiscard]] constexpr bool isShift(JtagState state)
{
    return state == JtagState::ShiftDr || state == JtagState::ShiftIr;
}

[[nodiscard]] constexpr bool isUpdate(JtagState state)
{
    return state == JtagState::UpdateDr || state == JtagState::UpdateIr;
}

[[nodiscard]] constexpr bool isCapture(JtagState state)
{
    return state == JtagState::CaptureDr || state == JtagState::CaptureIr;
}

/// The states in which a port may be, as long as that is not known.
class JtagStates {
public:
    constexpr JtagStates() = default; ///< all of them
    constexpr explicit JtagStates(JtagState state) : m_bits(bitOf(state)) {}
    [[nodiscard]] constexpr bool isOne() const { return std::has_single_bit(m_bits); }
    /// One of them.
    [[nodiscard]] constexpr JtagState first() const { return JtagState(std::countr_zero(m_bits)); }
    /// A rising edge of TCK.
    constexpr void clock(bool tms)
    {
        std::uint32_t next = 0;
        for (std::uint32_t i = 0; i < count; ++i) {
            next |= (m_bits >> i & 1U) != 0 ? bitOf(nextState(JtagState(i), tms)) : 0U;
        }
        m_bits = next;
    }

private:
    static constexpr std::uint32_t count = 16;
    static constexpr std::uint32_t bitOf(JtagState state) { return 1U << unsigned(state); }
    std::uint32_t m_bits = (1U << count) - 1;
};
