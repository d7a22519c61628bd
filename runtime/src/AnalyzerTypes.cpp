#include "corvanlux/analyzer/AnalyzerTypes.h"

Frame::Frame() = default;

Frame::Frame(const FrameData &words) : FrameData(words) {}

Frame::~Frame() = default;
