*! estat vif
program vif
	version 12.1
	estat vif `0'
end
