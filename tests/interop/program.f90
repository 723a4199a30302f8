! A Fortran program on the Fortran names: subroutines, functions with real and complex results, its own xerbla.
program interop
  implicit none
  integer :: position
  common /report/ position
  real :: a(2, 2), b(2, 2), c(2, 2), snrm2, sdot
  complex :: x(2), y(2), cdotc, cdotu
  integer :: isamax
  external :: sgemm, ctrsm, strsm
  logical :: good = .true.

  position = 0
  a = reshape([1., 3., 2., 4.], [2, 2])
  b = reshape([1., 0., 1., 2.], [2, 2])
  c = 9
  call sgemm('N', 'T', 2, 2, 2, 1., a, 2, b, 2, 0., c, 2)
  call expect(all(c == matmul(a, transpose(b))), 'sgemm')
  call strsm('Left', 'Lower', 'No transpose', 'Unit', 2, 2, 2., a, 2, b, 2)
  call expect(all(b == reshape([2., -6., 2., -2.], [2, 2])), 'strsm')
  call expect(sdot(2, a, 1, a(1, 2), -1) == 10, 'sdot')
  call expect(abs(snrm2(2, [3., 4.], 1) - 5) < 1e-6, 'snrm2')
  call expect(isamax(2, [1., -2.], 1) == 2, 'isamax')
  x = [(1., 2.), (3., -1.)]
  y = [(2., 0.), (1., 1.)]
  call expect(cdotc(2, x, 1, y, 1) == (4., 0.), 'cdotc')
  call expect(cdotu(2, x, 1, y, 1) == (6., 6.), 'cdotu')
  call expect(position == 0, 'no report so far')
  call sgemm('N', 'N', 2, 2, 2, 1., a, 1, b, 2, 0., c, 2)
  call expect(position == 8, 'report of a bad argument')
  if (.not. good) stop 1

contains
  subroutine expect(condition, what)
    logical, intent(in) :: condition
    character(*), intent(in) :: what
    if (condition) return
    print *, 'failed: ', what
    good = .false.
  end subroutine
end program

subroutine xerbla(name, info)
  implicit none
  character(*), intent(in) :: name
  integer, intent(in) :: info
  integer :: position
  common /report/ position
  if (name == 'SGEMM') position = info
end subroutine
