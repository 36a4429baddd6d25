/* Zorvex: linear, quadratic and mixed-integer optimization. C interface, usable from C11 and C++.
 *
 * Conventions
 *   - Every function returns 0 or an error code (ZLP_ERROR_...) unless said otherwise; the text of the most recent
 *     failure is fetched with ZLPgeterrormsg (environment) or ZLPgetmerrormsg (model).
 *   - Indices are zero-based. Arrays belong to the caller and are copied; texts returned belong to the library.
 *   - An environment and its models are used by one thread at a time; different environments are independent.
 *   - Edits are queued and take effect at ZLPupdatemodel or at the start of ZLPoptimize. Queries see the model as of
 *     its last update.
 *   - Bounds at or beyond +-1e20 are infinite.
 */
#ifndef ZORVEX_H
#define ZORVEX_H

#include <stdio.h>

#if defined(__GNUC__)
#define ZLP_EXPORT __attribute__((visibility("default")))
#else
#define ZLP_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

#define ZLP_VERSION_MAJOR 4
#define ZLP_VERSION_MINOR 6
#define ZLP_VERSION_TECHNICAL 1

#define ZLP_INFINITY 1e100  /* infinity of parameters and objective values */
#define ZLP_UNDEFINED 1e101 /* start value that is left open */
#define ZLP_MAX_NAMELEN 255 /* longest name, without its terminator */
#define ZLP_MAX_STRLEN 512  /* size of string parameter buffers */

/* Values of the attribute Status. */
#define ZLP_LOADED 1
#define ZLP_OPTIMAL 2
#define ZLP_INFEASIBLE 3
#define ZLP_INF_OR_UNBD 4
#define ZLP_UNBOUNDED 5
#define ZLP_CUTOFF 6
#define ZLP_ITERATION_LIMIT 7
#define ZLP_NODE_LIMIT 8
#define ZLP_TIME_LIMIT 9
#define ZLP_SOLUTION_LIMIT 10
#define ZLP_INTERRUPTED 11
#define ZLP_NUMERIC 12
#define ZLP_SUBOPTIMAL 13

/* Error codes. */
#define ZLP_ERROR_OUT_OF_MEMORY 10001
#define ZLP_ERROR_NULL_ARGUMENT 10002
#define ZLP_ERROR_INVALID_ARGUMENT 10003
#define ZLP_ERROR_UNKNOWN_ATTRIBUTE 10004
#define ZLP_ERROR_DATA_NOT_AVAILABLE 10005
#define ZLP_ERROR_INDEX_OUT_OF_RANGE 10006
#define ZLP_ERROR_UNKNOWN_PARAMETER 10007
#define ZLP_ERROR_VALUE_OUT_OF_RANGE 10008
#define ZLP_ERROR_NO_LICENSE 10009
#define ZLP_ERROR_SIZE_LIMIT_EXCEEDED 10010
#define ZLP_ERROR_CALLBACK 10011
#define ZLP_ERROR_FILE_READ 10012
#define ZLP_ERROR_FILE_WRITE 10013
#define ZLP_ERROR_NUMERIC 10014
#define ZLP_ERROR_IIS_NOT_INFEASIBLE 10015
#define ZLP_ERROR_NOT_FOR_MIP 10016
#define ZLP_ERROR_OPTIMIZATION_IN_PROGRESS 10017
#define ZLP_ERROR_DUPLICATES 10018
#define ZLP_ERROR_NODEFILE 10019
#define ZLP_ERROR_Q_NOT_PSD 10020

/* Variable types, constraint senses, SOS types, basis statuses. */
#define ZLP_CONTINUOUS 'C'
#define ZLP_BINARY 'B'
#define ZLP_INTEGER 'I'
#define ZLP_SEMICONT 'S'
#define ZLP_SEMIINT 'N'
#define ZLP_LESS_EQUAL '<'
#define ZLP_GREATER_EQUAL '>'
#define ZLP_EQUAL '='
#define ZLP_SOS_TYPE1 1
#define ZLP_SOS_TYPE2 2
#define ZLP_MINIMIZE 1
#define ZLP_MAXIMIZE (-1)
#define ZLP_BASIC 0
#define ZLP_NONBASIC_LOWER (-1)
#define ZLP_NONBASIC_UPPER (-2)
#define ZLP_SUPERBASIC (-3)

/* Parameter types returned by ZLPgetparamtype. */
#define ZLP_PARAM_INT 1
#define ZLP_PARAM_DBL 2
#define ZLP_PARAM_STR 3

typedef struct ZLPenv ZLPenv;     /* environment: parameters, log, error text */
typedef struct ZLPmodel ZLPmodel; /* one model with its own copy of the parameters */

/* --- environment --- */
ZLP_EXPORT int ZLPloadenv(ZLPenv** env, const char* log_file);
ZLP_EXPORT void ZLPfreeenv(ZLPenv* env);
ZLP_EXPORT ZLPenv* ZLPgetenv(ZLPmodel* model);
ZLP_EXPORT const char* ZLPgeterrormsg(ZLPenv* env);
ZLP_EXPORT const char* ZLPgetmerrormsg(ZLPmodel* model);
ZLP_EXPORT void ZLPmsg(ZLPenv* env, const char* text);
ZLP_EXPORT int ZLPsetlogfile(ZLPenv* env, FILE* stream);
ZLP_EXPORT int ZLPgetlogfile(ZLPenv* env, FILE** stream);
ZLP_EXPORT void ZLPversion(int* major, int* minor, int* technical);
ZLP_EXPORT const char* ZLPplatform(void);
ZLP_EXPORT void ZLPterminate(ZLPmodel* model);
ZLP_EXPORT int ZLPsetsignal(ZLPmodel* model);
ZLP_EXPORT int ZLPreleaselicense(ZLPenv* env);

/* --- parameters --- */
ZLP_EXPORT int ZLPsetintparam(ZLPenv* env, const char* name, int value);
ZLP_EXPORT int ZLPsetdblparam(ZLPenv* env, const char* name, double value);
ZLP_EXPORT int ZLPsetstrparam(ZLPenv* env, const char* name, const char* value);
ZLP_EXPORT int ZLPsetparam(ZLPenv* env, const char* name, const char* value);
ZLP_EXPORT int ZLPgetintparam(ZLPenv* env, const char* name, int* value);
ZLP_EXPORT int ZLPgetdblparam(ZLPenv* env, const char* name, double* value);
ZLP_EXPORT int ZLPgetstrparam(ZLPenv* env, const char* name, char* value);
ZLP_EXPORT int ZLPgetintparaminfo(ZLPenv* env, const char* name, int* value, int* min, int* max, int* def);
ZLP_EXPORT int ZLPgetdblparaminfo(ZLPenv* env, const char* name, double* value, double* min, double* max, double* def);
ZLP_EXPORT int ZLPgetstrparaminfo(ZLPenv* env, const char* name, char* value, char* def);
ZLP_EXPORT int ZLPgetparamtype(ZLPenv* env, const char* name);
ZLP_EXPORT int ZLPgetnumparams(ZLPenv* env);
ZLP_EXPORT int ZLPgetparamname(ZLPenv* env, int i, const char** name);
ZLP_EXPORT int ZLPresetparams(ZLPenv* env);
ZLP_EXPORT int ZLPreadparams(ZLPenv* env, const char* filename);
ZLP_EXPORT int ZLPwriteparams(ZLPenv* env, const char* filename);

/* --- building and changing models --- */
ZLP_EXPORT int ZLPnewmodel(ZLPenv* env, ZLPmodel** model, const char* name, int num_vars, const double* obj,
                           const double* lb, const double* ub, const char* vtype, const char* const* var_names);
ZLP_EXPORT int ZLPloadmodel(ZLPenv* env, ZLPmodel** model, const char* name, int num_vars, int num_constrs,
                            int obj_sense, double obj_con, const double* obj, const char* sense, const double* rhs,
                            const int* vbeg, const int* vlen, const int* vind, const double* vval, const double* lb,
                            const double* ub, const char* vtype, const char* const* var_names,
                            const char* const* constr_names);
ZLP_EXPORT int ZLPaddvar(ZLPmodel* model, int num_nz, const int* vind, const double* vval, double obj, double lb,
                         double ub, char vtype, const char* name);
ZLP_EXPORT int ZLPaddvars(ZLPmodel* model, int num_vars, int num_nz, const int* vbeg, const int* vind,
                          const double* vval, const double* obj, const double* lb, const double* ub, const char* vtype,
                          const char* const* names);
ZLP_EXPORT int ZLPaddconstr(ZLPmodel* model, int num_nz, const int* cind, const double* cval, char sense, double rhs,
                            const char* name);
ZLP_EXPORT int ZLPaddconstrs(ZLPmodel* model, int num_constrs, int num_nz, const int* cbeg, const int* cind,
                             const double* cval, const char* sense, const double* rhs, const char* const* names);
ZLP_EXPORT int ZLPaddrangeconstr(ZLPmodel* model, int num_nz, const int* cind, const double* cval, double lower,
                                 double upper, const char* name);
ZLP_EXPORT int ZLPaddrangeconstrs(ZLPmodel* model, int num_constrs, int num_nz, const int* cbeg, const int* cind,
                                  const double* cval, const double* lower, const double* upper,
                                  const char* const* names);
ZLP_EXPORT int ZLPaddsos(ZLPmodel* model, int num_sos, int num_members, const int* types, const int* beg,
                         const int* ind, const double* weight);
ZLP_EXPORT int ZLPaddqpterms(ZLPmodel* model, int num_terms, const int* qrow, const int* qcol, const double* qval);
ZLP_EXPORT int ZLPchgcoeffs(ZLPmodel* model, int num_changes, const int* cind, const int* vind, const double* val);
ZLP_EXPORT int ZLPdelvars(ZLPmodel* model, int num, const int* ind);
ZLP_EXPORT int ZLPdelconstrs(ZLPmodel* model, int num, const int* ind);
ZLP_EXPORT int ZLPdelsos(ZLPmodel* model, int num, const int* ind);
ZLP_EXPORT int ZLPdelq(ZLPmodel* model);
ZLP_EXPORT int ZLPupdatemodel(ZLPmodel* model);
ZLP_EXPORT int ZLPresetmodel(ZLPmodel* model);
ZLP_EXPORT int ZLPfreemodel(ZLPmodel* model);
ZLP_EXPORT int ZLPcheckmodel(ZLPmodel* model);

/* --- attributes --- */
ZLP_EXPORT int ZLPgetattrinfo(ZLPmodel* model, const char* name, int* type, int* kind, int* settable);
ZLP_EXPORT int ZLPisattravailable(ZLPmodel* model, const char* name);
ZLP_EXPORT int ZLPgetintattr(ZLPmodel* model, const char* name, int* value);
ZLP_EXPORT int ZLPgetdblattr(ZLPmodel* model, const char* name, double* value);
ZLP_EXPORT int ZLPgetstrattr(ZLPmodel* model, const char* name, const char** value);
ZLP_EXPORT int ZLPsetintattr(ZLPmodel* model, const char* name, int value);
ZLP_EXPORT int ZLPsetdblattr(ZLPmodel* model, const char* name, double value);
ZLP_EXPORT int ZLPsetstrattr(ZLPmodel* model, const char* name, const char* value);
ZLP_EXPORT int ZLPgetintattrelement(ZLPmodel* model, const char* name, int index, int* value);
ZLP_EXPORT int ZLPgetcharattrelement(ZLPmodel* model, const char* name, int index, char* value);
ZLP_EXPORT int ZLPgetdblattrelement(ZLPmodel* model, const char* name, int index, double* value);
ZLP_EXPORT int ZLPgetstrattrelement(ZLPmodel* model, const char* name, int index, const char** value);
ZLP_EXPORT int ZLPsetintattrelement(ZLPmodel* model, const char* name, int index, int value);
ZLP_EXPORT int ZLPsetcharattrelement(ZLPmodel* model, const char* name, int index, char value);
ZLP_EXPORT int ZLPsetdblattrelement(ZLPmodel* model, const char* name, int index, double value);
ZLP_EXPORT int ZLPsetstrattrelement(ZLPmodel* model, const char* name, int index, const char* value);
ZLP_EXPORT int ZLPgetintattrarray(ZLPmodel* model, const char* name, int first, int count, int* values);
ZLP_EXPORT int ZLPgetcharattrarray(ZLPmodel* model, const char* name, int first, int count, char* values);
ZLP_EXPORT int ZLPgetdblattrarray(ZLPmodel* model, const char* name, int first, int count, double* values);
ZLP_EXPORT int ZLPgetstrattrarray(ZLPmodel* model, const char* name, int first, int count, const char** values);
ZLP_EXPORT int ZLPsetintattrarray(ZLPmodel* model, const char* name, int first, int count, const int* values);
ZLP_EXPORT int ZLPsetcharattrarray(ZLPmodel* model, const char* name, int first, int count, const char* values);
ZLP_EXPORT int ZLPsetdblattrarray(ZLPmodel* model, const char* name, int first, int count, const double* values);
ZLP_EXPORT int ZLPsetstrattrarray(ZLPmodel* model, const char* name, int first, int count, const char* const* values);
ZLP_EXPORT int ZLPgetintattrlist(ZLPmodel* model, const char* name, int count, const int* ind, int* values);
ZLP_EXPORT int ZLPgetcharattrlist(ZLPmodel* model, const char* name, int count, const int* ind, char* values);
ZLP_EXPORT int ZLPgetdblattrlist(ZLPmodel* model, const char* name, int count, const int* ind, double* values);
ZLP_EXPORT int ZLPgetstrattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const char** values);
ZLP_EXPORT int ZLPsetintattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const int* values);
ZLP_EXPORT int ZLPsetcharattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const char* values);
ZLP_EXPORT int ZLPsetdblattrlist(ZLPmodel* model, const char* name, int count, const int* ind, const double* values);
ZLP_EXPORT int ZLPsetstrattrlist(ZLPmodel* model, const char* name, int count, const int* ind,
                                 const char* const* values);

/* --- queries --- */
ZLP_EXPORT int ZLPgetcoeff(ZLPmodel* model, int constr, int var, double* value);
ZLP_EXPORT int ZLPgetvars(ZLPmodel* model, int* num_nz, int* vbeg, int* vind, double* vval, int first, int num);
ZLP_EXPORT int ZLPgetconstrs(ZLPmodel* model, int* num_nz, int* cbeg, int* cind, double* cval, int first, int num);
/* Sides of rows first .. first + num - 1 in the signs they were given: lower <= a'x <= upper, -1e30 or 1e30 where there
 * is none. Either array (num entries) may be null. 10006 when the range is not one of rows or num < 1. */
ZLP_EXPORT int ZLPgetconstrsides(ZLPmodel* model, double* lower, double* upper, int first, int num);
ZLP_EXPORT int ZLPgetsos(ZLPmodel* model, int* num_members, int* types, int* beg, int* ind, double* weight, int first,
                         int num);
ZLP_EXPORT int ZLPgetq(ZLPmodel* model, int* num_terms, int* qrow, int* qcol, double* qval);

/* --- files --- */
ZLP_EXPORT int ZLPreadmodel(ZLPenv* env, const char* filename, ZLPmodel** model);
ZLP_EXPORT int ZLPread(ZLPmodel* model, const char* filename);
ZLP_EXPORT int ZLPwrite(ZLPmodel* model, const char* filename);

/* --- solving --- */
ZLP_EXPORT int ZLPoptimize(ZLPmodel* model);

#ifdef __cplusplus
}
#endif

#endif
