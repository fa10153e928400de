// A source of frames: a capture file or an interface.
#pragma once

#include "frame.h"

class FrameSource {
  public:
    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;

    /// Reads the next frame. Returns false at the end. Throws BadCapture if the source is damaged
    /// or cut short.
    virtual bool next(Frame& frame) = 0;

    /// The part that has been read, 0 to 1; below 0 if it is unknown.
    virtual double progress() const { return -1; }
};
