program pargs, byable(recall) properties(one two)
  syntax varlist [if] [in]
  marksample touse
  quietly count if `touse'
  display "`varlist': " r(N)
end
