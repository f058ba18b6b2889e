; end code
; For ABS: the fan stays off and the platform is lowered slowly, as a draught makes warm ABS crack.
G21
G90
G92.1
M104 T0 S{right_off}
M104 T1 S{left_off}
M140 S{platform_off}
M107
G1 Z{z_max} F300
G28 X Y
M84
; end of end code
