// Outcome of a solve and error codes, shared by all layers. Values are those of the C interface.
#pragma once

namespace zorvex {

// Values of the attribute Status.
enum class SolveStatus : int {
  kLoaded = 1,
  kOptimal = 2,
  kInfeasible = 3,
  kInfOrUnbd = 4,
  kUnbounded = 5,
  kCutoff = 6,
  kIterationLimit = 7,
  kNodeLimit = 8,
  kTimeLimit = 9,
  kSolutionLimit = 10,
  kInterrupted = 11,
  kNumeric = 12,
  kSuboptimal = 13,
};

// Return codes of every exported function.
enum ErrorCode : int {
  kOk = 0,
  kErrorOutOfMemory = 10001,
  kErrorNullArgument = 10002,
  kErrorInvalidArgument = 10003,
  kErrorUnknownAttribute = 10004,
  kErrorDataNotAvailable = 10005,
  kErrorIndexOutOfRange = 10006,
  kErrorUnknownParameter = 10007,
  kErrorValueOutOfRange = 10008,
  kErrorNoLicense = 10009,
  kErrorSizeLimit = 10010,
  kErrorCallback = 10011,
  kErrorFileRead = 10012,
  kErrorFileWrite = 10013,
  kErrorNumeric = 10014,
  kErrorIisNotInfeasible = 10015,
  kErrorNotForMip = 10016,
  kErrorOptimizationInProgress = 10017,
  kErrorDuplicates = 10018,
  kErrorNodeFile = 10019,
  kErrorQNotPsd = 10020,
};

}  // namespace zorvex
