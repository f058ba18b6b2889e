; end code
; For PLA: everything is off at once.
G21
G90
G92.1
M104 T0 S{right_off}
M104 T1 S{left_off}
M140 S{platform_off}
M107
G1 Z{z_max} F900
G28 X Y
M84
; end of end code
