; start code
; For dissolvable filament: the platform first, as it takes longest, and the tools when it is warm,
; so that nothing oozes meanwhile.
G21
G90
M82
G28
G1 Z{heating_height} F900
M190 S{platform_temperature}
M104 T0 S{right_temperature}
M104 T1 S{left_temperature}
M109 T0 S{right_temperature}
M109 T1 S{left_temperature}
{prime_left}
{prime_right}
; end of start code
