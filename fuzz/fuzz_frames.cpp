#include "fuzz_target.h"

#include <rpcwire/frame_splitter.h>
#include <rpcwire/json_text.h>
#include <rpcwire/message.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace rpcwire;

namespace {

constexpr std::size_t kFrameBytes = 1024;

struct Stream
{
    std::vector<std::string> frames;
    FrameSplitter::Result end = FrameSplitter::Result::Incomplete;

    bool operator==(const Stream& other) const
    {
        return frames == other.frames && end == other.end;
    }
};

/** What comes out when the bytes come in pieces of that size. */
Stream split(std::string_view bytes, std::size_t pieceBytes)
{
    Stream stream;
    FrameSplitter splitter(kFrameBytes);
    for (std::size_t begin = 0; begin < bytes.size(); begin += pieceBytes) {
        splitter.append(bytes.substr(begin, pieceBytes));
        std::string_view frame;
        while ((stream.end = splitter.next(&frame)) == FrameSplitter::Result::Frame)
            stream.frames.emplace_back(frame);
        if (stream.end == FrameSplitter::Result::TooLong)
            break;
    }
    return stream;
}

void read(const std::string& frame)
{
    Json::Value value;
    std::string reason;
    if (!parseJson(frame, &value, &reason)) {
        fuzz::require(!reason.empty(), "a refused text has a reason");
        return;
    }
    const std::string line = toJsonLine(value);
    fuzz::require(line.find('\n') == std::string::npos, "a value is written as one line");
    Json::Value again;
    fuzz::require(parseJson(line, &again, nullptr), "what is written can be read");
    fuzz::require(toJsonLine(again) == line, "what is read again is the same");
    if (!value.isObject())
        return;
    const Message message = readMessage(value);
    const bool isBad =
        message.kind == Message::Kind::BadRequest || message.kind == Message::Kind::BadAnswer;
    fuzz::require(isBad == !message.defect.empty(), "a bad message has a defect");
    if (message.error)
        fuzz::require(parseJson(errorLine(message.id, *message.error), &again, nullptr),
                      "an error can be passed on");
    quoted(message.method);
}

} // namespace

/** A stream of frames: its first byte says in how large pieces it comes in. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view bytes = fuzz::textOf(data + 1, size - 1);
    const Stream whole = split(bytes, std::max<std::size_t>(1, bytes.size()));
    fuzz::require(whole == split(bytes, std::max<std::size_t>(1, data[0])),
                  "frames do not depend on the pieces");
    for (const std::string& frame : whole.frames)
        read(frame);
    return 0;
}
