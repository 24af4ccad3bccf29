program other
  display "x"
end
