!prints: 5
integer, external :: twice_and_one
print '(i1)', twice_and_one(2)
end
integer function twice_and_one(n)
  integer, intent(in) :: n
  twice_and_one = 2 * n + 1
end function
