// Building and editing: what is seen when, indices, signs, ranges, what a change does to results and starts.
#include <cmath>
#include <memory>

#include "model/model.hpp"
#include "model_fixture.hpp"

namespace zorvex::test {
namespace {

class Edits : public ModelTest {
 protected:
  // Pretends that a solve ended.
  void fill_solution() {
    SolutionStore& solution = model_->solution;
    solution.status = SolveStatus::kOptimal;
    solution.solved = solution.has_objective = true;
    solution.x.assign(model_->data.obj.size(), 1.0);
    model_->solver_state = std::make_shared<int>(1);
  }
  void set_basis(const std::vector<int>& vbasis, const std::vector<int>& cbasis) {
    ASSERT_EQ(ZLPsetintattrarray(model_, "VBasis", 0, static_cast<int>(vbasis.size()), vbasis.data()), 0);
    ASSERT_EQ(ZLPsetintattrarray(model_, "CBasis", 0, static_cast<int>(cbasis.size()), cbasis.data()), 0);
  }
};

TEST_F(Edits, NothingIsSeenBeforeTheUpdate) {
  make_model(2, 2);
  const int index = 0;
  const double value = 3;
  EXPECT_EQ(ZLPaddvar(model_, 1, &index, &value, 5, 0, 1, 'B', "new"), 0);
  EXPECT_EQ(ZLPdelconstrs(model_, 1, &index), 0);
  EXPECT_EQ(get_int("NumVars"), 2);
  EXPECT_EQ(get_int("NumConstrs"), 2);
  EXPECT_TRUE(has_pending_changes(*model_));
  update();
  EXPECT_FALSE(has_pending_changes(*model_));
  EXPECT_EQ(get_int("NumVars"), 3);
  EXPECT_EQ(get_int("NumConstrs"), 1);
  EXPECT_EQ(get_str("VarName", 2), "new");
  EXPECT_EQ(get_str("VarName", 0), "C0000000");
}

TEST_F(Edits, ColumnBounds) {
  const struct {
    double lb, ub, stored_lb, stored_ub;
  } kRows[] = {{-1e20, 1e20, -1e20, 1e30},
               {-1e25, 5, -1e30, 5},
               {-HUGE_VAL, HUGE_VAL, -1e30, 1e30},
               {0, 9.99e19, 0, 9.99e19},
               {3, 2, 3, 2}};
  make_model(0, 0);
  for (const auto& row : kRows) {
    EXPECT_EQ(ZLPaddvar(model_, 0, nullptr, nullptr, 0, row.lb, row.ub, 'C', nullptr), 0);
  }
  update();
  int col = 0;
  for (const auto& row : kRows) {
    EXPECT_EQ(get_dbl("LB", col), row.stored_lb);
    EXPECT_EQ(get_dbl("UB", col++), row.stored_ub);
  }
}

TEST_F(Edits, DefaultsOfNullArrays) {
  make_model(0, 1);
  EXPECT_EQ(ZLPaddvars(model_, 2, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(ZLPaddconstrs(model_, 2, 0, nullptr, nullptr, nullptr, "=>", nullptr, nullptr), 0);
  update();
  EXPECT_EQ(get_dbl("Obj", 2), 0);
  EXPECT_EQ(get_dbl("LB", 2), 0);
  EXPECT_EQ(get_dbl("UB", 2), 1e30);
  EXPECT_EQ(get_char("VType", 2), 'C');
  EXPECT_EQ(get_dbl("RHS", 1), 0);
}

TEST_F(Edits, GreaterRowsAreHeldNegatedAndReadBackAsGiven) {
  make_model(0, 2);
  const int index[] = {0, 1};
  const double value[] = {3, -4};
  EXPECT_EQ(ZLPaddconstr(model_, 2, index, value, '>', 6, nullptr), 0);
  update();
  EXPECT_EQ(model_->data.matrix.value[0], -3);
  EXPECT_EQ(model_->data.rhs[0], -6);
  EXPECT_EQ(get_char("Sense", 0), '>');
  EXPECT_EQ(get_dbl("RHS", 0), 6);
  EXPECT_EQ(coefficient(0, 0), 3);
  const int at_zero = 0;
  const double ten = 10;
  EXPECT_EQ(ZLPaddvar(model_, 1, &at_zero, &ten, 0, 0, 1, 'C', nullptr), 0);
  EXPECT_EQ(ZLPchgcoeffs(model_, 1, &at_zero, &at_zero, &ten), 0);
  update();
  EXPECT_EQ(coefficient(0, 2), 10);
  EXPECT_EQ(coefficient(0, 0), 10);
  int count = 0, begin[3], rows[3];
  double values[3];
  EXPECT_EQ(ZLPgetvars(model_, &count, nullptr, rows, values, 0, 3), 0);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(ZLPgetvars(model_, &count, begin, rows, values, 1, 2), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(begin[1], 1);
  EXPECT_EQ(values[0], -4);
  EXPECT_EQ(ZLPgetconstrs(model_, &count, begin, rows, values, 0, 1), 0);
  EXPECT_EQ(values[2], 10);
}

TEST_F(Edits, RangeRows) {
  make_model(0, 1);
  const struct {
    double lower, upper;
    char sense;
    double rhs, seen_lower, seen_upper;
  } kRows[] = {{-2, 7, '<', 7, -2, 7},
               {-1e30, 4, '<', 4, -kInf, 4},
               {3, kInf, '>', 3, 3, kInf},
               {5, 5, '=', 5, 5, 5},
               {-kInf, kInf, '<', 1e30, -kInf, kInf}};
  const int index = 0;
  const double value = 2;
  for (const auto& row : kRows) {
    ASSERT_EQ(ZLPaddrangeconstr(model_, 1, &index, &value, row.lower, row.upper, nullptr), 0);
  }
  update();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(get_char("Sense", i), kRows[i].sense) << i;
    EXPECT_EQ(get_dbl("RHS", i), kRows[i].rhs) << i;
    EXPECT_EQ(model_->data.row_sides(i).lower, kRows[i].seen_lower) << i;
    EXPECT_EQ(model_->data.row_sides(i).upper, kRows[i].seen_upper) << i;
    EXPECT_EQ(coefficient(i, 0), 2);
  }
  double lower[5], upper[5];
  EXPECT_EQ(ZLPgetconstrsides(model_, lower, upper, 0, 5), 0);
  EXPECT_EQ(std::vector<double>(lower, lower + 5), (std::vector<double>{-2, -1e30, 3, 5, -1e30}));
  EXPECT_EQ(std::vector<double>(upper, upper + 5), (std::vector<double>{7, 4, 1e30, 5, 1e30}));
  EXPECT_EQ(ZLPsetdblattrelement(model_, "RHS", 0, 10), 0);
  update();
  EXPECT_EQ(model_->data.row_sides(0).lower, 1) << "a new right-hand side moves the range";
  EXPECT_EQ(ZLPsetcharattrelement(model_, "Sense", 0, '>'), 0);
  update();
  EXPECT_EQ(model_->data.row_sides(0).lower, 10);
  EXPECT_EQ(model_->data.row_sides(0).upper, kInf);
}

TEST_F(Edits, FailingDeletionKeepsEarlierMarks) {
  make_model(5, 2);
  const int index[] = {0, 7};
  EXPECT_EQ(ZLPdelconstrs(model_, 2, index), 10006);
  EXPECT_EQ(message(), "Problem deleting constraint");
  EXPECT_EQ(ZLPdelconstrs(model_, 0, nullptr), 0);
  EXPECT_EQ(ZLPdelvars(model_, -3, nullptr), 0);
  update();
  EXPECT_EQ(get_int("NumConstrs"), 4);
  EXPECT_EQ(get_dbl("RHS", 0), 20);
}

// Between updates stored objects keep their numbers and added ones follow, whatever is deleted.
TEST_F(Edits, IndicesBetweenUpdates) {
  make_model(2, 2);
  const int zero = 0, second_row = 1, added_col = 2, added_row = 2;
  const double nine = 9, eight = 8;
  EXPECT_EQ(ZLPdelvars(model_, 1, &zero), 0);
  EXPECT_EQ(ZLPaddvar(model_, 1, &second_row, &nine, 1, 0, 1, 'C', "added"), 0);
  const int cols[] = {0, 1, 2};
  const double values[] = {5, 6, 7};
  EXPECT_EQ(ZLPaddconstr(model_, 3, cols, values, '<', 1, nullptr), 0);
  EXPECT_EQ(ZLPchgcoeffs(model_, 1, &added_row, &added_col, &eight), 0);
  EXPECT_EQ(ZLPchgcoeffs(model_, 1, &zero, &zero, &eight), 0);  // of a column about to go
  update();
  ASSERT_EQ(get_int("NumVars"), 2);
  EXPECT_EQ(coefficient(2, 0), 6);
  EXPECT_EQ(coefficient(2, 1), 8);
  EXPECT_EQ(coefficient(1, 1), 9);
  EXPECT_EQ(get_int("NumNZs"), 4);
}

TEST_F(Edits, LastCoefficientWinsAndZeroRemoves) {
  make_model(2, 2);
  const int nonzeros = get_int("NumNZs");
  const int rows[] = {0, 0, 0, 1, 1}, cols[] = {0, 1, 0, 0, 0};
  const double values[] = {4, 3, 0, 2, 0};
  EXPECT_EQ(ZLPchgcoeffs(model_, 5, rows, cols, values), 0);
  update();
  EXPECT_EQ(coefficient(0, 0), 0);
  EXPECT_EQ(coefficient(0, 1), 3);
  EXPECT_EQ(coefficient(1, 0), 0);
  EXPECT_EQ(get_int("NumNZs"), nonzeros);  // one gone, one made
}

TEST_F(Edits, SosAndQuadraticFollowTheirColumns) {
  make_model(1, 4);
  const int types[] = {2, 1}, begin[] = {0, 3}, members[] = {0, 1, 3, 2, 3};
  const double weights[] = {1, 2.5, 4, 7, 8};
  const int first[] = {0, 1, 3, 1}, second[] = {0, 3, 2, 1};
  const double values[] = {2, -4, 6, 0};
  EXPECT_EQ(ZLPaddsos(model_, 2, 5, types, begin, members, weights), 0);
  EXPECT_EQ(ZLPaddqpterms(model_, 4, first, second, values), 0);
  update();
  EXPECT_EQ(get_int("NumQNZs"), 3);
  EXPECT_EQ(get_int("IsQP"), 1);
  EXPECT_EQ(get_int("IsMIP"), 1);
  const int zero = 0;
  EXPECT_EQ(ZLPdelvars(model_, 1, &zero), 0);
  EXPECT_EQ(ZLPdelsos(model_, 1, &begin[1]), 10006);
  EXPECT_EQ(ZLPdelsos(model_, 1, &types[1]), 0);
  update();
  int count = 0, sos_types[2], sos_begin[2], sos_members[5], q_first[3], q_second[3];
  double sos_weights[5], q_values[3];
  ASSERT_EQ(ZLPgetsos(model_, &count, sos_types, sos_begin, sos_members, sos_weights, 0, 1), 0);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(sos_types[0], 2);
  EXPECT_EQ(sos_members[0], 0);
  EXPECT_EQ(sos_members[1], 2);
  EXPECT_EQ(sos_weights[0], 2.5);
  ASSERT_EQ(ZLPgetq(model_, &count, q_first, q_second, q_values), 0);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(q_first[1], 2);
  EXPECT_EQ(q_second[1], 1);
  EXPECT_EQ(q_values[1], 6);
  EXPECT_EQ(ZLPaddqpterms(model_, 1, &zero, &zero, values), 0);
  EXPECT_EQ(ZLPdelq(model_), 0);
  EXPECT_EQ(ZLPaddqpterms(model_, 1, &zero, &zero, values + 1), 0);
  update();
  ASSERT_EQ(ZLPgetq(model_, &count, q_first, q_second, q_values), 0);
  ASSERT_EQ(count, 1);
  EXPECT_EQ(q_values[0], -4);
}

TEST_F(Edits, ResultsLastUntilTheProblemChanges) {
  make_model(2, 2);
  fill_solution();
  EXPECT_EQ(ZLPsetstrattrelement(model_, "VarName", 0, "n"), 0);
  update();
  EXPECT_EQ(get_dbl("X", 0), 1) << "a name changes no solution";
  EXPECT_NE(model_->solver_state, nullptr);
  EXPECT_EQ(ZLPsetdblattrelement(model_, "UB", 0, 5), 0);
  EXPECT_EQ(get_dbl("X", 0), 1);
  update();
  EXPECT_EQ(get_int("Status"), ZLP_LOADED);
  EXPECT_EQ(ZLPisattravailable(model_, "X"), 0);
  EXPECT_EQ(model_->solver_state, nullptr);
  fill_solution();
  set_basis({-1, -1}, {0, 0});
  EXPECT_EQ(ZLPsetdblattrelement(model_, "Start", 0, 2), 0);
  EXPECT_EQ(ZLPresetmodel(model_), 0);
  EXPECT_EQ(ZLPisattravailable(model_, "X"), 0);
  EXPECT_EQ(ZLPisattravailable(model_, "VBasis"), 0);
  EXPECT_EQ(get_dbl("Start", 0), 2);
  EXPECT_EQ(get_int("NumVars"), 2);
}

TEST_F(Edits, BasisGrowsWithTheModel) {
  make_model(1, 2);
  set_basis({0, -1}, {-1});
  EXPECT_EQ(ZLPsetdblattrelement(model_, "CDualNorm", 0, 6), 0);
  EXPECT_EQ(ZLPaddvar(model_, 0, nullptr, nullptr, 0, -HUGE_VAL, 3, 'C', nullptr), 0);
  EXPECT_EQ(ZLPaddvar(model_, 0, nullptr, nullptr, 0, -HUGE_VAL, HUGE_VAL, 'C', nullptr), 0);
  EXPECT_EQ(ZLPaddconstr(model_, 0, nullptr, nullptr, '<', 3, nullptr), 0);
  update();
  const int expected[] = {0, -1, -2, -3};
  for (int col = 0; col < 4; ++col) EXPECT_EQ(get_int("VBasis", col), expected[col]);
  EXPECT_EQ(get_int("CBasis", 0), -1);
  EXPECT_EQ(get_int("CBasis", 1), 0);
  EXPECT_EQ(get_dbl("CDualNorm", 0), 6);
  EXPECT_EQ(get_dbl("CDualNorm", 1), 1);
}

TEST_F(Edits, BasisIsDroppedWhenItNoLongerFits) {
  const struct {
    std::vector<int> cols, rows;
    bool kept;
  } kCases[] = {{{1}, {}, true}, {{}, {1}, true}, {{0}, {}, false}, {{}, {0}, false}, {{0}, {0}, true}};
  for (const auto& test : kCases) {
    make_model(2, 2);
    set_basis({0, -1}, {-1, 0});
    EXPECT_EQ(ZLPsetdblattrelement(model_, "CDualNorm", 0, 6), 0);
    ASSERT_EQ(ZLPsetintparam(ZLPgetenv(model_), "OutputFlag", 1), 0);
    EXPECT_EQ(ZLPdelvars(model_, static_cast<int>(test.cols.size()), test.cols.data()), 0);
    EXPECT_EQ(ZLPdelconstrs(model_, static_cast<int>(test.rows.size()), test.rows.data()), 0);
    testing::internal::CaptureStdout();
    update();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), test.kept ? "" : "Warning, invalid warm-start basis discarded\n");
    EXPECT_EQ(ZLPisattravailable(model_, "VBasis"), test.kept);
    EXPECT_EQ(get_int("HasDualNorm"), test.kept);
    ASSERT_EQ(ZLPfreemodel(model_), 0);
    model_ = nullptr;
  }
}

TEST_F(Edits, LoadedModel) {
  const double obj[] = {1, 2, 3}, rhs[] = {4, 5}, lb[] = {-1e25, 0, 1}, ub[] = {1, 1e20, 2}, val[] = {9, 1, 2, 9, 3};
  const int beg[] = {1, 0, 4}, len[] = {2, 0, 1}, ind[] = {9, 1, 0, 9, 1};  // with gaps
  const char* names[] = {"a", "b", "c"};
  ASSERT_EQ(ZLPloadmodel(env_, &model_, "loaded", 3, 2, -1, 7, obj, "<>", rhs, beg, len, ind, val, lb, ub, "CIB", names,
                         nullptr),
            0);
  EXPECT_EQ(get_int("NumNZs"), 3);
  EXPECT_EQ(coefficient(1, 0), 1);
  EXPECT_EQ(coefficient(0, 0), 2);
  EXPECT_EQ(coefficient(1, 2), 3);
  EXPECT_EQ(get_dbl("RHS", 1), 5);
  EXPECT_EQ(get_dbl("LB", 0), -1e30);
  EXPECT_EQ(get_dbl("UB", 1), 1e30);
  EXPECT_EQ(get_int("ModelSense"), -1);
  EXPECT_EQ(get_dbl("ObjCon"), 7);
  EXPECT_EQ(model_->data.min_cost(2), -3);
  EXPECT_EQ(get_str("VarName", 1), "b");
  ASSERT_EQ(ZLPfreemodel(model_), 0);
  const int starts[] = {0, 1, 1, 2};  // without lengths
  ASSERT_EQ(ZLPloadmodel(env_, &model_, nullptr, 3, 2, 1, 0, nullptr, "<>", nullptr, starts, nullptr, ind + 1, val,
                         nullptr, nullptr, nullptr, nullptr, nullptr),
            0);
  EXPECT_EQ(coefficient(1, 0), 9);
  EXPECT_EQ(coefficient(0, 2), 1);
}

TEST_F(Edits, ParametersAreThoseOfTheCreation) {
  ASSERT_EQ(ZLPsetdblparam(env_, "TimeLimit", 12), 0);
  make_model(1, 1);
  ASSERT_EQ(ZLPsetdblparam(env_, "TimeLimit", 99), 0);
  double limit = 0;
  EXPECT_EQ(ZLPgetdblparam(ZLPgetenv(model_), "TimeLimit", &limit), 0);
  EXPECT_EQ(limit, 12);
}

TEST_F(Edits, Statistics) {
  make_model(2, 3);  // coefficients 1, 21 and 12; right-hand sides 10, 20
  EXPECT_EQ(get_dbl("MaxCoeff"), 21);
  EXPECT_EQ(get_dbl("MinCoeff"), 1);
  EXPECT_EQ(get_dbl("MinRHS"), 10);
  EXPECT_EQ(get_dbl("MaxRHS"), 20);
  EXPECT_EQ(get_dbl("MaxBound"), 0) << "zeros and infinities do not count";
  EXPECT_EQ(get_dbl("MinObjCoeff"), 0);
  EXPECT_EQ(ZLPsetdblattrelement(model_, "LB", 1, -6), 0);
  EXPECT_EQ(ZLPsetdblattrelement(model_, "Obj", 1, -0.5), 0);
  update();
  EXPECT_EQ(get_dbl("MinBound"), 6);
  EXPECT_EQ(get_dbl("MaxObjCoeff"), 0.5);
}

// max 2x + 3y, x + y <= 4, x - y >= -2, point (1, 3.5), with duals of a maximisation; y is semi-continuous in [2, 6].
TEST_F(Edits, Quality) {
  const double obj[] = {2, 3}, lb[] = {0, 2}, ub[] = {10, 6}, rhs[] = {4, -2}, val[] = {1, 1, 1, -1};
  const int beg[] = {0, 2}, len[] = {2, 2}, ind[] = {0, 1, 0, 1};
  ASSERT_EQ(
      ZLPloadmodel(env_, &model_, "q", 2, 2, -1, 0, obj, "<>", rhs, beg, len, ind, val, lb, ub, "IS", nullptr, nullptr),
      0);
  SolutionStore& solution = model_->solution;
  solution.x = {1.25, 3.5};
  EXPECT_EQ(get_dbl("ConstrVio"), 0.75);  // 4.75 against 4; -2.25 against -2
  EXPECT_EQ(get_int("ConstrVioIndex"), 0);
  EXPECT_EQ(get_dbl("ConstrVioSum"), 1.0);
  EXPECT_EQ(get_dbl("ConstrSVioSum"), 1.0);
  EXPECT_EQ(get_dbl("BoundVio"), 0);
  EXPECT_EQ(get_int("BoundVioIndex"), -1);
  EXPECT_EQ(get_dbl("IntVio"), 0.25);
  EXPECT_EQ(ZLPisattravailable(model_, "DualVio"), 0);
  solution.x = {1, 3};
  solution.slack = {0, -0.5};  // the true one is 0
  solution.pi = {2.5, -0.5};
  solution.rc = {0, 0};
  EXPECT_EQ(get_dbl("ConstrResidual"), 0.5);
  EXPECT_EQ(get_int("ConstrResidualIndex"), 1);
  EXPECT_EQ(get_dbl("DualVio"), 0);
  EXPECT_EQ(get_dbl("DualResidual"), 0);
  EXPECT_EQ(get_dbl("ComplVio"), 0);
  solution.rc = {0, 0.125};
  EXPECT_EQ(get_dbl("DualResidual"), 0.125);
  EXPECT_EQ(get_int("DualResidualIndex"), 1);
  solution.pi = {-2.5, 0.5};  // of the wrong sense
  EXPECT_GT(get_dbl("DualVio"), 1.0);
  solution.x = {11, 0.75};
  EXPECT_EQ(get_dbl("BoundVio"), 1) << "a semi-continuous variable may lie between zero and its bounds here";
  EXPECT_EQ(get_dbl("IntVio"), 0.75);
  EXPECT_EQ(get_int("IntVioIndex"), 1);
}

TEST_F(Edits, SolutionNumberChoosesFromThePool) {
  make_model(1, 2);
  model_->solution.x = {1, 2};
  model_->solution.pool = {{5, {1, 2}}, {6, {3, 4}}};
  EXPECT_EQ(get_int("SolCount"), 2);
  EXPECT_EQ(get_dbl("Xn", 1), 2);
  ASSERT_EQ(ZLPsetintparam(ZLPgetenv(model_), "SolutionNumber", 1), 0);
  EXPECT_EQ(get_dbl("Xn", 1), 4);
  EXPECT_EQ(get_dbl("X", 1), 2);
  ASSERT_EQ(ZLPsetintparam(ZLPgetenv(model_), "SolutionNumber", 2), 0);
  EXPECT_EQ(ZLPisattravailable(model_, "Xn"), 0);
}

}  // namespace
}  // namespace zorvex::test
