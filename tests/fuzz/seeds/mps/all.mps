NAME seed with objcon=           3
OBJSENSE
    MAX
ROWS
 N  cost
 L  lim1
 G  lim2
 E  eq1
COLUMNS
    x         cost      1.5       lim1      1
    x         lim2      -2e3
    M1        'MARKER'                 'INTORG'
    y         cost      2         eq1       1D2
    M2        'MARKER'                 'INTEND'
    z         lim2      1         eq1       -1
RHS
    B         lim1      4         lim2      1
RANGES
    R         lim1      2.5       eq1       -3
BOUNDS
 UP BND       x    4
 LI BND       y         0
 MI BND       z
 SC BND       z         10
SOS
 S1 s0
    x         1
    y         2
QUADOBJ
    x         x         2
    x         z         1
ENDATA
