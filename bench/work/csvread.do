insheet using table.csv, clear
summarize
