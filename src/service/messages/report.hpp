// The library's internal entries for CBLAS argument and allocation reports.
#pragma once

namespace tav::service {

// Reports a bad argument of a CBLAS routine: selects cdecl_xerbla as the handler when none is
// installed, then calls cdecl_xerbla itself, so the report always runs the replaceable chain and
// never an installed handler. `position` counts the layout argument as 1. The library's CBLAS
// layer calls this rather than the exported cblas_xerbla, which programs written for other CBLAS
// libraries define with a signature of their own.
void cblas_report(const char* name, int position);

// The same for a failed scratch allocation (info 1000, printed as insufficient workspace).
void cblas_report_malloc_error(const char* name);

}  // namespace tav::service
