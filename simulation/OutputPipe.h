#pragma once

#include <string>

namespace simulation {

/** Standard output of this process leads into a pipe while this is there. One at a time. */
class OutputPipe {
  public:
    OutputPipe();
    ~OutputPipe();
    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

    /** What stands in the pipe; empty when nothing came for a tenth of a second. */
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
