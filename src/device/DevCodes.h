#pragma once

/// The models by their codes, the values of "devModel".
namespace devModel {

constexpr int none = 0;         ///< no hardware was ever seen
constexpr int bytes8 = 1;       ///< streams one byte a sample, whatever channels are in use
constexpr int slices16 = 5;     ///< streams slices of the channels in use
constexpr int wide = 9;         ///< 32 channels
constexpr int mixedSignal = 97; ///< with analog channels

} // namespace devModel

/// What a model may have beside its channels.
namespace devFeature {

constexpr int thresholds = 1; ///< adjustable thresholds of the inputs
constexpr int pwm = 2;        ///< PWM outputs

} // namespace devFeature

/// How a model brings its samples to the program.
namespace devTransfer {

constexpr int memory = 0;    ///< captures into its own memory
constexpr int streaming = 1; ///< sends as it samples

} // namespace devTransfer
