#include "MoDiffWorkerFrame.h"

#include "MoDiffRecord.h"

#include <cstring>

std::string MoDiffWorkerFrame::encode(std::uint32_t place, MoDiffPairResult const& result) {
    std::string const line = MoDiffRecord::pairLine(result);
    MoDiffWorkerFrame frame = {};
    frame.lineLength = static_cast<std::uint32_t>(line.size());
    frame.place = place;
    frame.seconds = result.seconds;
    frame.outcome = result.outcome;
    frame.hasWarnings = !result.warnings.empty();
    std::string bytes(sizeof frame, '\0');
    std::memcpy(bytes.data(), &frame, sizeof frame);
    return bytes += line;
}

bool MoDiffWorkerFrame::decode(std::string_view& bytes, MoDiffWorkerFrame& frame, std::string_view& line) {
    if (bytes.size() < sizeof frame)
        return false;
    std::memcpy(&frame, bytes.data(), sizeof frame);
    if (bytes.size() - sizeof frame < frame.lineLength)
        return false;
    line = bytes.substr(sizeof frame, frame.lineLength);
    bytes.remove_prefix(sizeof frame + frame.lineLength);
    return true;
}
