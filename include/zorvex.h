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

/* Version of this header; ZLPversion tells that of the library. */
#define ZLP_VERSION_MAJOR 4     /* changes when programs have to change */
#define ZLP_VERSION_MINOR 6     /* changes when there is something new */
#define ZLP_VERSION_TECHNICAL 1 /* changes with every release */

/* Numbers with a meaning. */
#define ZLP_INFINITY 1e100  /* infinity of parameters and objective values */
#define ZLP_UNDEFINED 1e101 /* start value that is left open */
#define ZLP_MAX_NAMELEN 255 /* longest name, without its terminator */
#define ZLP_MAX_STRLEN 512  /* size of string parameter buffers */

/* Values of the attribute Status. */
#define ZLP_LOADED 1          /* no result: not solved yet, or changed since */
#define ZLP_OPTIMAL 2         /* optimal within the tolerances, for a MIP within MIPGap or MIPGapAbs */
#define ZLP_INFEASIBLE 3      /* no point satisfies all bounds and constraints */
#define ZLP_INF_OR_UNBD 4     /* infeasible or unbounded, which of both is open */
#define ZLP_UNBOUNDED 5       /* the objective improves without end */
#define ZLP_CUTOFF 6          /* no solution is better than Cutoff */
#define ZLP_ITERATION_LIMIT 7 /* IterationLimit or BarIterLimit reached */
#define ZLP_NODE_LIMIT 8      /* NodeLimit reached */
#define ZLP_TIME_LIMIT 9      /* TimeLimit reached */
#define ZLP_SOLUTION_LIMIT 10 /* SolutionLimit reached */
#define ZLP_INTERRUPTED 11    /* stopped by ZLPterminate, an interrupt or a callback */
#define ZLP_NUMERIC 12        /* given up for numerical trouble */
#define ZLP_SUBOPTIMAL 13     /* a solution, but its optimality could not be proven */

/* Error codes. */
#define ZLP_ERROR_OUT_OF_MEMORY 10001       /* memory ran out; the model is as before the call */
#define ZLP_ERROR_NULL_ARGUMENT 10002       /* a handle or array that is needed is null */
#define ZLP_ERROR_INVALID_ARGUMENT 10003    /* an argument has no meaning here, or a handle is not alive */
#define ZLP_ERROR_UNKNOWN_ATTRIBUTE 10004   /* no such attribute, or not of this type and shape, or not settable */
#define ZLP_ERROR_DATA_NOT_AVAILABLE 10005  /* the value does not exist in the present state of the model */
#define ZLP_ERROR_INDEX_OUT_OF_RANGE 10006  /* an index beyond the objects there are */
#define ZLP_ERROR_UNKNOWN_PARAMETER 10007   /* no such parameter, or not of this type */
#define ZLP_ERROR_VALUE_OUT_OF_RANGE 10008  /* a parameter value outside its range */
#define ZLP_ERROR_NO_LICENSE 10009          /* no licence, or it was released */
#define ZLP_ERROR_SIZE_LIMIT_EXCEEDED 10010 /* the licence does not cover a model of this size */
#define ZLP_ERROR_CALLBACK 10011            /* a callback failed, or asked for what there is not */
#define ZLP_ERROR_FILE_READ 10012           /* a file cannot be read or holds errors */
#define ZLP_ERROR_FILE_WRITE 10013          /* a file cannot be written */
#define ZLP_ERROR_NUMERIC 10014             /* numerical trouble made an answer impossible */
#define ZLP_ERROR_IIS_NOT_INFEASIBLE 10015  /* an analysis of infeasibility was asked for a model that is feasible */
#define ZLP_ERROR_NOT_FOR_MIP 10016         /* not defined for models with integer variables or sets */
#define ZLP_ERROR_OPTIMIZATION_IN_PROGRESS 10017 /* the model is being solved, or one of its callbacks runs */
#define ZLP_ERROR_DUPLICATES 10018               /* an index appears twice where it may appear once */
#define ZLP_ERROR_NODEFILE 10019                 /* a node file cannot be written or read */
#define ZLP_ERROR_Q_NOT_PSD 10020                /* the quadratic terms are not convex */

/* Variable types, constraint senses, SOS types, basis statuses. */
#define ZLP_CONTINUOUS 'C'      /* variable type: any value within the bounds */
#define ZLP_BINARY 'B'          /* variable type: 0 or 1 */
#define ZLP_INTEGER 'I'         /* variable type: a whole number within the bounds */
#define ZLP_SEMICONT 'S'        /* variable type: 0 or within the bounds */
#define ZLP_SEMIINT 'N'         /* variable type: 0 or a whole number within the bounds */
#define ZLP_LESS_EQUAL '<'      /* constraint sense: a'x <= RHS */
#define ZLP_GREATER_EQUAL '>'   /* constraint sense: a'x >= RHS */
#define ZLP_EQUAL '='           /* constraint sense: a'x = RHS */
#define ZLP_SOS_TYPE1 1         /* set type: at most one member is not zero */
#define ZLP_SOS_TYPE2 2         /* set type: at most two members, next to each other in weight order */
#define ZLP_MINIMIZE 1          /* ModelSense */
#define ZLP_MAXIMIZE (-1)       /* ModelSense */
#define ZLP_BASIC 0             /* basis status */
#define ZLP_NONBASIC_LOWER (-1) /* basis status: at the lower bound, or a constraint at its side */
#define ZLP_NONBASIC_UPPER (-2) /* basis status: at the upper bound */
#define ZLP_SUPERBASIC (-3)     /* basis status: nonbasic between the bounds, or free */

/* Where a callback is called from. */
#define ZLP_WHERE_POLLING 0      /* now and then, from anywhere in a solve; nothing but ZLP_WHAT_RUNTIME is known */
#define ZLP_WHERE_PRESOLVE 1     /* after every pass of presolve */
#define ZLP_WHERE_SIMPLEX 2      /* simplex, at its refactorizations and at its end; not for nodes below the root */
#define ZLP_WHERE_MIP 3          /* tree search, between two nodes */
#define ZLP_WHERE_MIP_SOLUTION 4 /* tree search, a feasible point that is about to become the incumbent */
#define ZLP_WHERE_MIP_NODE 5     /* tree search, a node relaxation that is solved and not integral */
#define ZLP_WHERE_MESSAGE 6      /* a log message, also outside a solve and with OutputFlag 0 */
#define ZLP_WHERE_BARRIER 7      /* after every barrier iteration */

/* What ZLPcbget can be asked for, with the type of the result and the callbacks in which it exists. Objective values
 * are in the user's sense; 1e100 times ModelSense stands for no incumbent, -1e100 times ModelSense for no bound. */
#define ZLP_WHAT_RUNTIME 1                     /* double, anywhere: seconds since ZLPoptimize was called, 0 outside */
#define ZLP_WHAT_PRESOLVE_ROWS_REMOVED 1000    /* int, PRESOLVE: rows removed so far */
#define ZLP_WHAT_PRESOLVE_COLS_REMOVED 1001    /* int, PRESOLVE: columns removed or, for a MIP, fixed so far */
#define ZLP_WHAT_SIMPLEX_ITERATIONS 2000       /* double, SIMPLEX: iterations so far */
#define ZLP_WHAT_SIMPLEX_OBJECTIVE 2001        /* double, SIMPLEX: objective value of the current basis */
#define ZLP_WHAT_SIMPLEX_PRIMAL_INF 2002       /* double, SIMPLEX: sum of primal infeasibilities, scaled */
#define ZLP_WHAT_SIMPLEX_DUAL_INF 2003         /* double, SIMPLEX: sum of dual infeasibilities, scaled */
#define ZLP_WHAT_MIP_INCUMBENT 3000            /* double, MIP, MIP_SOLUTION, MIP_NODE: objective of the best solution */
#define ZLP_WHAT_MIP_BOUND 3001                /* double, MIP, MIP_SOLUTION, MIP_NODE: best bound */
#define ZLP_WHAT_MIP_NODES 3002                /* double, MIP, MIP_SOLUTION, MIP_NODE: nodes explored */
#define ZLP_WHAT_MIP_OPEN_NODES 3003           /* double, MIP, MIP_SOLUTION, MIP_NODE: nodes still to be explored */
#define ZLP_WHAT_MIP_ITERATIONS 3004           /* double, MIP, MIP_SOLUTION, MIP_NODE: simplex iterations */
#define ZLP_WHAT_MIP_SOLUTIONS 3005            /* int, MIP, MIP_SOLUTION, MIP_NODE: solutions found */
#define ZLP_WHAT_MIP_CUTS 3006                 /* int, MIP, MIP_SOLUTION, MIP_NODE: cutting planes in use */
#define ZLP_WHAT_SOLUTION 4000                 /* double[NumVars], MIP_SOLUTION: the point */
#define ZLP_WHAT_SOLUTION_OBJECTIVE 4001       /* double, MIP_SOLUTION: its objective value */
#define ZLP_WHAT_NODE_RELAXATION 5000          /* double[NumVars], MIP_NODE: the optimum of the relaxation */
#define ZLP_WHAT_NODE_OBJECTIVE 5001           /* double, MIP_NODE: its objective value */
#define ZLP_WHAT_NODE_DEPTH 5002               /* int, MIP_NODE: depth in the tree, 0 for the root */
#define ZLP_WHAT_MESSAGE_TEXT 6000             /* const char*, MESSAGE: the text, cut to 511 bytes; valid inside only */
#define ZLP_WHAT_BARRIER_ITERATIONS 7000       /* int, BARRIER: iterations so far */
#define ZLP_WHAT_BARRIER_PRIMAL_OBJECTIVE 7001 /* double, BARRIER: primal objective value */
#define ZLP_WHAT_BARRIER_DUAL_OBJECTIVE 7002   /* double, BARRIER: dual objective value */
#define ZLP_WHAT_BARRIER_PRIMAL_RESIDUAL 7003  /* double, BARRIER: primal residual */
#define ZLP_WHAT_BARRIER_DUAL_RESIDUAL 7004    /* double, BARRIER: dual residual */
#define ZLP_WHAT_BARRIER_COMPLEMENTARITY 7005  /* double, BARRIER: complementarity */

/* Parameter types returned by ZLPgetparamtype. */
#define ZLP_PARAM_INT 1 /* integer */
#define ZLP_PARAM_DBL 2 /* double */
#define ZLP_PARAM_STR 3 /* text */

typedef struct ZLPenv ZLPenv;       /* environment: parameters, log, error text */
typedef struct ZLPmodel ZLPmodel;   /* one model with its own copy of the parameters */
typedef struct ZLPcbdata ZLPcbdata; /* what a callback asks and answers through */

/* A sparse vector: len entries val[k] at ind[k]. The arrays are the caller's. */
typedef struct ZLPsvec {
  int len;
  int* ind;
  double* val;
} ZLPsvec;

/* A callback: `where` is one of ZLP_WHERE_..., `user` what was registered with it. 0 goes on, anything else ends the
 * solve. It must return normally (no longjmp, no C++ exception). */
typedef int (*ZLPcallback)(ZLPmodel* model, ZLPcbdata* cbdata, int where, void* user);

/* --- environment ---
 * Free models before their environment: a model whose environment is gone fails every call with 10003 and can only be
 * freed. A freed handle is refused with 10003 too, as long as its record has not been reused. */

/* A new environment with every parameter at its default, then as the file zorvex.env in the working directory says.
 * Logs to log_file too (appended to; null: none). *env is null on failure; the reason is in the log only. */
ZLP_EXPORT int ZLPloadenv(ZLPenv** env, const char* log_file);
/* Null is ignored, and so is the environment of a model, which goes with its model. */
ZLP_EXPORT void ZLPfreeenv(ZLPenv* env);
/* The environment record of the model, which holds its parameters; null for an invalid model. */
ZLP_EXPORT ZLPenv* ZLPgetenv(ZLPmodel* model);
/* Text of the most recent failure, "" for none or an invalid handle. Valid until the next call. */
ZLP_EXPORT const char* ZLPgeterrormsg(ZLPenv* env);
ZLP_EXPORT const char* ZLPgetmerrormsg(ZLPmodel* model);
/* Writes the text to the log as it is. */
ZLP_EXPORT void ZLPmsg(ZLPenv* env, const char* text);
/* Replaces the log file by an open stream, which the environment closes later; null: none. */
ZLP_EXPORT int ZLPsetlogfile(ZLPenv* env, FILE* stream);
ZLP_EXPORT int ZLPgetlogfile(ZLPenv* env, FILE** stream);
/* Null pointers are skipped. */
ZLP_EXPORT void ZLPversion(int* major, int* minor, int* technical);
ZLP_EXPORT const char* ZLPplatform(void);
/* Asks the running ZLPoptimize of the model to stop with status 11; from any thread and from callbacks. Without one it
 * does nothing. */
ZLP_EXPORT void ZLPterminate(ZLPmodel* model);
/* SIGINT becomes ZLPterminate of this model, once: the second one ends the process. One model per process. */
ZLP_EXPORT int ZLPsetsignal(ZLPmodel* model);
/* Gives the licence back: ZLPoptimize then fails with 10009. 10005 for the environment of a model. */
ZLP_EXPORT int ZLPreleaselicense(ZLPenv* env);

/* --- parameters ---
 * docs/parameters.md lists them. Names are matched without regard to case and to underscores after the first character;
 * unknown names and wrong types fail with 10007, values out of range with 10008 and no change. A model's parameters are
 * those of ZLPgetenv(model). Integers are first clamped to +-2000000000, doubles to +-1e100. */
ZLP_EXPORT int ZLPsetintparam(ZLPenv* env, const char* name, int value);
ZLP_EXPORT int ZLPsetdblparam(ZLPenv* env, const char* name, double value);
ZLP_EXPORT int ZLPsetstrparam(ZLPenv* env, const char* name, const char* value);
/* A parameter of any type from text. */
ZLP_EXPORT int ZLPsetparam(ZLPenv* env, const char* name, const char* value);
ZLP_EXPORT int ZLPgetintparam(ZLPenv* env, const char* name, int* value);
ZLP_EXPORT int ZLPgetdblparam(ZLPenv* env, const char* name, double* value);
/* value holds ZLP_MAX_STRLEN bytes, here and below. */
ZLP_EXPORT int ZLPgetstrparam(ZLPenv* env, const char* name, char* value);
/* Current value, bounds and default; null pointers are skipped. */
ZLP_EXPORT int ZLPgetintparaminfo(ZLPenv* env, const char* name, int* value, int* min, int* max, int* def);
ZLP_EXPORT int ZLPgetdblparaminfo(ZLPenv* env, const char* name, double* value, double* min, double* max, double* def);
ZLP_EXPORT int ZLPgetstrparaminfo(ZLPenv* env, const char* name, char* value, char* def);
/* ZLP_PARAM_..., or -1 for an unknown name. */
ZLP_EXPORT int ZLPgetparamtype(ZLPenv* env, const char* name);
/* The number of public parameters; names are numbered from 0, and the text belongs to the library. */
ZLP_EXPORT int ZLPgetnumparams(ZLPenv* env);
ZLP_EXPORT int ZLPgetparamname(ZLPenv* env, int i, const char** name);
/* All numeric parameters to their defaults; texts stay. */
ZLP_EXPORT int ZLPresetparams(ZLPenv* env);
/* Lines "NAME VALUE"; what cannot be applied is reported in the log and skipped. 10003: the file cannot be read. */
ZLP_EXPORT int ZLPreadparams(ZLPenv* env, const char* filename);
/* The numeric parameters that differ from their defaults. 10003: the file cannot be written. */
ZLP_EXPORT int ZLPwriteparams(ZLPenv* env, const char* filename);

/* --- building and changing models ---
 * Edits are queued. Until the update every index counts the objects of the stored model first, then those added since,
 * in the order they were added, whatever is marked for deletion: a row may use a column that was just added. At the
 * update coefficient changes come after additions, deletions last. A failing call queues nothing, except that marks set
 * by a deletion before its first bad index stay. An update that changes more than names discards the solution; a basis
 * is kept for a warm start as long as it fits (added rows basic, added columns nonbasic).
 *
 * Lists of nonzeros: vector k has the entries beg[k] .. beg[k + 1] - 1, the last one up to num_nz - 1; beg may be null
 * when num_nz is 0. An index named twice in one vector is refused (10018); zero values are left out. Objective,
 * right-hand sides and coefficients must be finite, bounds may be infinite; neither may be NaN (10003). Lower bounds
 * below -1e20 are stored as -1e30, upper bounds from 1e20 on as 1e30. Names may be null (unnamed) and have at most 255
 * characters (10003). Null column arrays mean: objective 0, lower bound 0, upper bound infinite, type 'C', no names.
 * Negative counts: 10003, where not said otherwise; missing arrays: 10002; indices out of range: 10006. */

/* A model with num_vars columns and no rows, with a copy of the environment's parameters. *model is null on failure. */
ZLP_EXPORT int ZLPnewmodel(ZLPenv* env, ZLPmodel** model, const char* name, int num_vars, const double* obj,
                           const double* lb, const double* ub, const char* vtype, const char* const* var_names);
/* A whole model. Column j has the entries vbeg[j] .. vbeg[j] + vlen[j] - 1 of vind (rows) and vval; a null vlen means
 * that vbeg has num_vars + 1 entries and each column ends where the next begins; a null vbeg means no entries.
 * obj_sense is 1 or -1. sense is required when there are rows; a null rhs means zeros. */
ZLP_EXPORT int ZLPloadmodel(ZLPenv* env, ZLPmodel** model, const char* name, int num_vars, int num_constrs,
                            int obj_sense, double obj_con, const double* obj, const char* sense, const double* rhs,
                            const int* vbeg, const int* vlen, const int* vind, const double* vval, const double* lb,
                            const double* ub, const char* vtype, const char* const* var_names,
                            const char* const* constr_names);
/* One column, or num_vars columns: nonzeros by row index, objective, bounds, type, name. */
ZLP_EXPORT int ZLPaddvar(ZLPmodel* model, int num_nz, const int* vind, const double* vval, double obj, double lb,
                         double ub, char vtype, const char* name);
ZLP_EXPORT int ZLPaddvars(ZLPmodel* model, int num_vars, int num_nz, const int* vbeg, const int* vind,
                          const double* vval, const double* obj, const double* lb, const double* ub, const char* vtype,
                          const char* const* names);
/* One row, or num_constrs rows: nonzeros by column index, sense '<', '>' or '=', right-hand side (null array: zeros),
 * name. The array of senses is required. */
ZLP_EXPORT int ZLPaddconstr(ZLPmodel* model, int num_nz, const int* cind, const double* cval, char sense, double rhs,
                            const char* name);
ZLP_EXPORT int ZLPaddconstrs(ZLPmodel* model, int num_constrs, int num_nz, const int* cbeg, const int* cind,
                             const double* cval, const char* sense, const double* rhs, const char* const* names);
/* Rows lower <= a'x <= upper; lower above upper is refused (10003). Equal sides make an equality, an infinite side a
 * one-sided row. A true range row reads as sense '<' with its upper side as right-hand side; writing RHS moves it
 * as a whole, writing Sense makes it one-sided. */
ZLP_EXPORT int ZLPaddrangeconstr(ZLPmodel* model, int num_nz, const int* cind, const double* cval, double lower,
                                 double upper, const char* name);
ZLP_EXPORT int ZLPaddrangeconstrs(ZLPmodel* model, int num_constrs, int num_nz, const int* cbeg, const int* cind,
                                  const double* cval, const double* lower, const double* upper,
                                  const char* const* names);
/* num_sos sets: type 1 or 2, members (columns, each once in a set) and weights, which give their order. A null weight
 * array means 1, 2, 3, ... in every set. Deleting a column removes it from its sets. */
ZLP_EXPORT int ZLPaddsos(ZLPmodel* model, int num_sos, int num_members, const int* types, const int* beg,
                         const int* ind, const double* weight);
/* Adds 1/2 * qval[k] * x[qrow[k]] * x[qcol[k]] to the objective for every k: the terms are the entries of Q in 1/2
 * x'Qx, of which only the symmetric part counts. Terms add up and are kept in order; zeros are left out. */
ZLP_EXPORT int ZLPaddqpterms(ZLPmodel* model, int num_terms, const int* qrow, const int* qcol, const double* qval);
/* Sets coefficients: rows cind, columns vind. The last change of a coefficient wins; 0 removes it. A count of 0 or less
 * does nothing. */
ZLP_EXPORT int ZLPchgcoeffs(ZLPmodel* model, int num_changes, const int* cind, const int* vind, const double* val);
/* Deletion at the next update, by index in the stored model; naming one twice is no error. A count of 0 or less does
 * nothing. ZLPdelq removes all quadratic terms, stored and queued. */
ZLP_EXPORT int ZLPdelvars(ZLPmodel* model, int num, const int* ind);
ZLP_EXPORT int ZLPdelconstrs(ZLPmodel* model, int num, const int* ind);
ZLP_EXPORT int ZLPdelsos(ZLPmodel* model, int num, const int* ind);
ZLP_EXPORT int ZLPdelq(ZLPmodel* model);
/* Applies the queued edits. */
ZLP_EXPORT int ZLPupdatemodel(ZLPmodel* model);
/* Discards solution, basis and search state; keeps data, queued edits, Start and BranchPriority. */
ZLP_EXPORT int ZLPresetmodel(ZLPmodel* model);
/* Frees the model and its environment record, also after the environment it was made from. 10017 while optimizing. */
ZLP_EXPORT int ZLPfreemodel(ZLPmodel* model);
/* 0 and a cleared error text for a usable model; 10002 null, 10003 not a live model or its environment is gone, 10017
 * optimization in progress. Every other call on a model begins with the same check. */
ZLP_EXPORT int ZLPcheckmodel(ZLPmodel* model);

/* --- attributes ---
 * Names match in any case, and with underscores anywhere but in front. Access by element, by range of `count` objects
 * from `first` on, or by a list of `count` indices; a count of 0 succeeds before any other check. Strings read belong
 * to the library and last until the next update. Errors: 10004 unknown name, wrong type, wrong shape or not settable;
 * 10005 the value does not exist now; 10006 index; 10002 null values. Writes of ModelName, ModelSense, ObjCon, LB, UB,
 * Obj, VType, VarName, RHS, Sense and ConstrName are queued edits, seen after the next update. Start, BranchPriority,
 * VBasis, CBasis, VDualNorm and CDualNorm take effect at once; the first status written to a model without a basis
 * starts from the slack basis. Signs: Slack = RHS - a'x; Pi is the change of the objective per unit of RHS and RC = Obj
 * - A'Pi, both in the sense the user optimizes. The ranges SAObj..., SALB..., SAUB... and SARHS... tell how far one
 * number may go, all others as they are, while the optimal basis stays optimal; they are computed at the first question
 * (10005 without an optimal basis), on a basis that is confirmed first: a warning in the log tells when it had to
 * change. A quality measure's ...Index is -1 when nothing is violated; dual violations of slacks count from NumVars on.
 * Unnamed objects read as "C%07d" or "R%07d". */

/* type: 0 char, 1 int, 2 double, 3 string; kind: 0 model, 1 variable, 2 constraint, 3 SOS; settable: 0 or 1. Null
 * results are skipped. */
ZLP_EXPORT int ZLPgetattrinfo(ZLPmodel* model, const char* name, int* type, int* kind, int* settable);
/* 1 when reading the attribute would succeed now, else 0, also for unknown names and unusable models. */
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

/* The coefficient of one row and column, 0 where there is none. */
ZLP_EXPORT int ZLPgetcoeff(ZLPmodel* model, int constr, int var, double* value);
/* num vectors (columns, rows or sets) from first on; the range must not be empty. The count of entries is always
 * stored; with any of the arrays null that is all, to size them for a second call. beg gets num positions, counted from
 * 0. */
ZLP_EXPORT int ZLPgetvars(ZLPmodel* model, int* num_nz, int* vbeg, int* vind, double* vval, int first, int num);
ZLP_EXPORT int ZLPgetconstrs(ZLPmodel* model, int* num_nz, int* cbeg, int* cind, double* cval, int first, int num);
/* Sides of rows first .. first + num - 1 in the signs they were given: lower <= a'x <= upper, -1e30 or 1e30 where there
 * is none. Either array (num entries) may be null. 10006 when the range is not one of rows or num < 1. */
ZLP_EXPORT int ZLPgetconstrsides(ZLPmodel* model, double* lower, double* upper, int first, int num);
ZLP_EXPORT int ZLPgetsos(ZLPmodel* model, int* num_members, int* types, int* beg, int* ind, double* weight, int first,
                         int num);
/* All quadratic terms in stored order, with the meaning of ZLPaddqpterms. Sizing as above. */
ZLP_EXPORT int ZLPgetq(ZLPmodel* model, int* num_terms, int* qrow, int* qcol, double* qval);

/* --- files ---
 * The suffix of the name, in any case, tells the format: models are .mps, .rew and .qps (MPS; .rew is written with
 * generic names, .qps only read), .lp, .rlp (generic names) and .ilp (LP format, only read; the infeasible subsystem of
 * a model cannot be written yet); data that goes with a model is .sol (solution), .mst (MIP start), .bas (basis), .ord
 * (branching priorities) and .prm (parameters). Behind it may stand .gz, .bz2, .zip or .7z, in lower case: gzip, bzip2
 * or 7z are then run to compress or decompress. 10012 and 10013 stand for files of unknown kinds too. */

/* A new model. A name that does not exist is tried with the suffixes of models and of compressed files added. What the
 * reader has to say goes to the log, errors with the number of the line. *model is null on failure; 10003: there is no
 * such file, 10012: it cannot be read as a model. */
ZLP_EXPORT int ZLPreadmodel(ZLPenv* env, const char* filename, ZLPmodel** model);
/* Data of a file that goes with the model: .mst into Start, .bas into VBasis and CBasis, .ord into BranchPriority, .prm
 * into the parameters. Names are those of the model as of its last update. */
ZLP_EXPORT int ZLPread(ZLPmodel* model, const char* filename);
/* The model as of its last update (with a warning when edits are queued), or what the suffix says of its solution,
 * start, basis or parameters; 10005 when it has none. */
ZLP_EXPORT int ZLPwrite(ZLPmodel* model, const char* filename);

/* --- solving --- */

/* Applies pending changes and solves. Returns 0 whenever the solve ended with a Status (attribute), also infeasible or
 * at a limit; the results are attributes:
 *   X, ObjVal        a point within tolerance; after a limit only when one was found
 *   Pi, RC           continuous models, in the user's sense: RC = Obj - A'Pi, Pi the change of ObjVal per unit of RHS;
 *                    Obj + QX in place of Obj where there are quadratic terms
 *   Slack            RHS - A x, for range rows the upper side - A x
 *   VBasis, CBasis   where the next solve of a continuous model starts; with VDualNorm, CDualNorm when known
 *   FarkasDual       status 3, asked for by InfUnbdInfo: l >= 0 on '<' rows, <= 0 on '>' rows; l'A x > l'RHS within all
 *                    bounds, where a range row counts with its lower side as RHS if its l is negative
 *   UnbdRay          status 5, asked for by InfUnbdInfo: a direction in which the objective improves for ever
 * Pi is >= 0 on '>' and <= 0 on '<' rows of a minimisation, the other way round of a maximisation.
 * A tree search stopped by a limit or an interruption goes on at the next call unless the model was changed. 10020: the
 * quadratic terms are not convex; those of binary columns alone need not be. 10009: the licence was released. */
ZLP_EXPORT int ZLPoptimize(ZLPmodel* model);

/* --- callbacks ---
 * One function for each model, called from inside ZLPoptimize on the thread that called it, and for log messages.
 * Inside it, calls that only read the model work (attributes, queries, ZLPwrite); calls that would change, solve or
 * free it fail with 10017, ZLPterminate stops the solve with status 11. A callback that returns non-zero is not called
 * again in that solve, which ends with status 11 and the code 10011; a solution it was looking at is not taken. It is
 * not called while it runs. Sub-problems that heuristics solve show up as POLLING only.
 *
 * Constraints a model is short of, because there are too many to write down, are added when a solution breaks them:
 * with PreCrush 1 the search counts on that, and asks the callback about every point that could become the incumbent,
 * be it from the tree, a heuristic, a MIP start or ZLPcbsolution. Bounds and proofs then hold for the model with all
 * constraints added so far; the relaxation should be bounded without them. */

/* Registers the function; null: none. A search that a limit stopped begins anew afterwards. */
ZLP_EXPORT int ZLPsetcallbackfunc(ZLPmodel* model, ZLPcallback function, void* user);
/* The value of `what` (ZLP_WHAT_..., which tells the type of *result). `where` is that of the call. 10011, with the
 * reason in the error text of ZLPgetenv(model), when it does not exist here. */
ZLP_EXPORT int ZLPcbget(ZLPcbdata* cbdata, int where, int what, void* result);
/* Offers a point: NumVars values, ZLP_UNDEFINED where the search is to find one. It is looked at after the callback has
 * returned, as a MIP start is. In MIP, MIP_SOLUTION and MIP_NODE, else 10011. */
ZLP_EXPORT int ZLPcbsolution(ZLPcbdata* cbdata, const double* solution);
/* Adds sum cval[k] * x[cind[k]] sense rhs, over at least one variable and none twice. In MIP_NODE a cut, which every
 * solution has to satisfy anyway; used where the relaxation violates it. In MIP_SOLUTION a constraint that the model
 * was short of. Needs PreCrush 1. 10011 elsewhere or without it. */
ZLP_EXPORT int ZLPcbcut(ZLPcbdata* cbdata, int num_nz, const int* cind, const double* cval, char sense, double rhs);

/* --- basis queries ---
 * Questions about the basis B that the last solve of a continuous model ended with, whatever its status. Variable j <
 * NumVars is a column, NumVars + i the slack of constraint i, with the coefficient 1 in that constraint whatever its
 * sense (a'x + Slack = RHS). Column k of B is the column of the variable that is basic in position k. Everything is in
 * the user's terms: unscaled, constraints with the signs they were given. The inverse is built at the first question
 * and kept until the results are discarded; it is held in extended precision when the solve ended in it.
 *
 * Vectors: an input has distinct indices (10018), finite values (10003) and a length of at least 0; it may be the
 * output as well. The caller gives the output arrays of NumConstrs entries (ZLPBinvRowi: NumVars); len is overwritten.
 * Indices come in increasing order, entries of magnitude 1e-13 or less are left out. 10005: no basis, or one without
 * inverse (never solved, changed since, a MIP, barrier without crossover); 10002: a missing vector or array; 10006:
 * index. */

/* x = B^-1 b: b over constraints, x over positions. */
ZLP_EXPORT int ZLPFSolve(ZLPmodel* model, const ZLPsvec* b, ZLPsvec* x);
/* x = b'B^-1: b over positions, x over constraints. */
ZLP_EXPORT int ZLPBSolve(ZLPmodel* model, const ZLPsvec* b, ZLPsvec* x);
/* Column j of B^-1, over positions. */
ZLP_EXPORT int ZLPBinvj(ZLPmodel* model, int j, ZLPsvec* x);
/* Row i of B^-1, over constraints. */
ZLP_EXPORT int ZLPBinvi(ZLPmodel* model, int i, ZLPsvec* x);
/* Column j of the tableau, B^-1 times the column of variable j (a slack too), over positions. */
ZLP_EXPORT int ZLPBinvColj(ZLPmodel* model, int j, ZLPsvec* x);
/* Row i of the tableau, B^-1 A, over the NumVars columns. That of the slacks is ZLPBinvi. */
ZLP_EXPORT int ZLPBinvRowi(ZLPmodel* model, int i, ZLPsvec* x);
/* The variable that is basic in each position: NumConstrs numbers. */
ZLP_EXPORT int ZLPgetBasisHead(ZLPmodel* model, int* bhead);

/* --- derived models ---
 * A new model made from another one as its last update left it. It carries over names, parameters, Start,
 * BranchPriority and the basis for a warm start, but no results, queued edits or callback. The two are independent and
 * may be freed in any order. *derived is null on failure. */

/* The same model. */
ZLP_EXPORT int ZLPcopymodel(ZLPmodel* model, ZLPmodel** derived);
/* The continuous model that is left when every integer variable is fixed at its value in the best solution, every
 * semicontinuous one kept in its branch, and every member of an SOS set that is zero kept at zero; its Pi and RC tell
 * what the solution's continuous part is worth. 10005 when there is no solution. */
ZLP_EXPORT int ZLPfixedmodel(ZLPmodel* model, ZLPmodel** derived);
/* The continuous relaxation: no integrality, no SOS sets; binary variables within [0, 1], semicontinuous ones anywhere
 * between zero and their farther bound. */
ZLP_EXPORT int ZLPrelaxmodel(ZLPmodel* model, ZLPmodel** derived);

#ifdef __cplusplus
}
#endif

#endif
