drafting-3
meier
Thursday, 16 May, 09:12
