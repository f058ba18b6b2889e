; end code
; For dissolvable filament: it cracks in a draught while it is warm, so the platform goes down slowly.
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
