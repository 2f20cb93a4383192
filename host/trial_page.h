#pragma once

#include <string>
#include <vector>

#include "host/reports/report_data.h"
#include "host/result_files.h"
#include "host/trial_report.h"

namespace host {

// What the report page shows: the session, and the result files of its runs, which are not published yet.
reports::TrialReport TrialPageData(const TrialSession& session, const ResultFiles& files);

}  // namespace host
