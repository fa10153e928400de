// Where frames come from: a capture file, or an interface.
#pragma once

#include "frame.h"

class FrameSource {
  public:
    FrameSource() = default;
    virtual ~FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;

    /// The next frame; false at the end. Throws BadCapture if the source is damaged or cut short.
    virtual bool next(Frame& frame) = 0;

    /// How much has been read, 0 to 1; below 0 if that is unknown.
    virtual double progress() const { return -1; }
};
