use data20
_merge 1:1 id using side20, noreport
