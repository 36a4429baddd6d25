* Transportation: plants p, markets m, x_p_m units shipped at a cost each
NAME transport
ROWS
 N cost
 L supply0
 L supply1
 L supply2
 L supply3
 L supply4
 G demand0
 G demand1
 G demand2
 G demand3
 G demand4
 G demand5
 G demand6
 G demand7
COLUMNS
 x_0_0 cost 10 supply0 1
 x_0_0 demand0 1
 x_0_1 cost 29 supply0 1
 x_0_1 demand1 1
 x_0_2 cost 29 supply0 1
 x_0_2 demand2 1
 x_0_3 cost 11 supply0 1
 x_0_3 demand3 1
 x_0_4 cost 12 supply0 1
 x_0_4 demand4 1
 x_0_5 cost 15 supply0 1
 x_0_5 demand5 1
 x_0_6 cost 8 supply0 1
 x_0_6 demand6 1
 x_0_7 cost 9 supply0 1
 x_0_7 demand7 1
 x_1_0 cost 3 supply1 1
 x_1_0 demand0 1
 x_1_1 cost 3 supply1 1
 x_1_1 demand1 1
 x_1_2 cost 14 supply1 1
 x_1_2 demand2 1
 x_1_3 cost 24 supply1 1
 x_1_3 demand3 1
 x_1_4 cost 22 supply1 1
 x_1_4 demand4 1
 x_1_5 cost 8 supply1 1
 x_1_5 demand5 1
 x_1_6 cost 6 supply1 1
 x_1_6 demand6 1
 x_1_7 cost 28 supply1 1
 x_1_7 demand7 1
 x_2_0 cost 10 supply2 1
 x_2_0 demand0 1
 x_2_1 cost 21 supply2 1
 x_2_1 demand1 1
 x_2_2 cost 8 supply2 1
 x_2_2 demand2 1
 x_2_3 cost 6 supply2 1
 x_2_3 demand3 1
 x_2_4 cost 13 supply2 1
 x_2_4 demand4 1
 x_2_5 cost 23 supply2 1
 x_2_5 demand5 1
 x_2_6 cost 12 supply2 1
 x_2_6 demand6 1
 x_2_7 cost 18 supply2 1
 x_2_7 demand7 1
 x_3_0 cost 25 supply3 1
 x_3_0 demand0 1
 x_3_1 cost 3 supply3 1
 x_3_1 demand1 1
 x_3_2 cost 24 supply3 1
 x_3_2 demand2 1
 x_3_3 cost 12 supply3 1
 x_3_3 demand3 1
 x_3_4 cost 28 supply3 1
 x_3_4 demand4 1
 x_3_5 cost 5 supply3 1
 x_3_5 demand5 1
 x_3_6 cost 29 supply3 1
 x_3_6 demand6 1
 x_3_7 cost 15 supply3 1
 x_3_7 demand7 1
 x_4_0 cost 8 supply4 1
 x_4_0 demand0 1
 x_4_1 cost 17 supply4 1
 x_4_1 demand1 1
 x_4_2 cost 22 supply4 1
 x_4_2 demand2 1
 x_4_3 cost 21 supply4 1
 x_4_3 demand3 1
 x_4_4 cost 10 supply4 1
 x_4_4 demand4 1
 x_4_5 cost 15 supply4 1
 x_4_5 demand5 1
 x_4_6 cost 3 supply4 1
 x_4_6 demand6 1
 x_4_7 cost 12 supply4 1
 x_4_7 demand7 1
RHS
 rhs supply0 86
 rhs supply1 79
 rhs supply2 81
 rhs supply3 83
 rhs supply4 94
 rhs demand0 59
 rhs demand1 21
 rhs demand2 58
 rhs demand3 54
 rhs demand4 46
 rhs demand5 24
 rhs demand6 49
 rhs demand7 55
ENDATA
