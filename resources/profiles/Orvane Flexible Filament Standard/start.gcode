; start code
; For flexible filament: it is soft at once, so the nozzle is given time before it is primed.
G21
G90
M82
G28
G1 Z{heating_height} F900
M140 S{platform_temperature}
M104 T0 S{right_temperature}
M104 T1 S{left_temperature}
M190 S{platform_temperature}
M109 T0 S{right_temperature}
M109 T1 S{left_temperature}
G4 P10000
{prime_left}
{prime_right}
; end of start code
