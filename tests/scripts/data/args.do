#delimit ;
display `"0: `0' 1: `1' 2: `2'"'
;
local mine gone; version 9; exit 7; display 1;
