// The report as a test sees it: the lines kept since the capture began.
#pragma once

#include <cstddef>
#include <string>

#include "tools/vistrel_diag/report/report.h"

class ReportCapture {
  public:
    ReportCapture() : start_(Report::Text().size()) {}

    /// The kept text since construction with its line ends as the file has them.
    std::string FileText() const { return Report::Text().Copy().substr(start_); }

    /// The same with plain line feeds, for comparing with a raw string.
    std::string Text() const {
        std::string text = FileText();
        for (std::size_t i = text.find("\r\n"); i != std::string::npos; i = text.find("\r\n", i)) {
            text.erase(i, 1);
        }
        return text;
    }

  private:
    std::size_t start_;
};
