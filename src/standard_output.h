// The process's standard output, redirected to a file for as long as one dump takes.
#pragma once

class StandardOutput {
  public:
    /// Reopens it onto the file, in text mode; text that the host has buffered goes where it was
    /// meant to go. False where the file cannot be opened: standard output is then closed.
    [[nodiscard]] bool redirect(const char* path);

    /// Completes and closes the file and puts standard output back: on the console device on
    /// Windows, elsewhere on what it was on before, or on the null device.
    void restore();

  private:
#if !defined(_WIN32)
    int saved_ = -1;  // duplicate of the descriptor
#endif
};
