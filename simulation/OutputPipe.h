#pragma once

#include <string>

namespace simulation {

/** Redirects standard output of this process to a pipe as long as the object exists. One at a time. */
class OutputPipe {
  public:
    OutputPipe();
    ~OutputPipe();
    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

    /** The content of the pipe; empty when nothing came for a tenth of a second. */
    std::string Read();

    /** Nobody reads any more: whoever writes gets an error. */
    void EndReading();

    /** Closes standard output, as if this process had been started without. */
    void CloseOutput();

  private:
    int m_before = -1;
    int m_reader = -1;
};

}  // namespace simulation
